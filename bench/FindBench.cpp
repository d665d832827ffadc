// Finding among two million events: the processor time until a result stands, beside ripgrep's over
// the same log file. Both search on one thread.

#include "Measure.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/ArrangedEvents.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace quorbel::bench {
namespace {

constexpr std::uint64_t kLines = 2'000'000;
constexpr double kSpacing = 0.04;
constexpr int kRounds = 5;
constexpr int kArrivals = 100'000;

struct Search {
    double seconds = 1e9;
    double longestSlice = 0;
    std::size_t found = 0;
};

/// Searches in slices as long as the window's, after `before`.
Search timeOf(ArrangedEvents &events, const EventQuery &before, const EventQuery &filter) {
    Search best;
    for (int round = 0; round < kRounds; ++round) {
        events.setFilter(before);
        events.search([] { return false; });
        double longest = 0;
        const ProcessorWatch watch;
        ProcessorWatch slice;
        const auto endSlice = [&] {
            longest = std::max(longest, slice.seconds());
            slice = {};
        };
        events.setFilter(filter);
        while (events.isSearching()) {
            events.search([&] { return slice.seconds() > 0.008; });
            endSlice();
        }
        endSlice();
        best.seconds = std::min(best.seconds, watch.seconds());
        best.longestSlice = std::max(best.longestSlice, longest);
    }
    best.found = events.size();
    return best;
}

EventQuery textFilter(const std::string &text, bool isExpression = false) {
    EventQuery filter;
    filter.texts.push_back({{text, false, isExpression}, false});
    return filter;
}

double bestOf(const std::string &command) {
    double best = 1e9;
    secondsOf(command);
    for (int round = 0; round < kRounds; ++round) {
        best = std::min(best, processorSecondsOf(command));
    }
    return best;
}

void load(EventList &list, const std::filesystem::path &file) {
    list.beginBulkInsert();
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        line += '\n';
        const auto fields = splitLogLine(line);
        list.insertRaw({fields->date, fields->priority, fields->host, fields->message, {}});
    }
    list.endBulkInsert();
}

void show(EventList &list, const std::string &dateFormat) {
    AppState state;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        state.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
    }
    state.newDateFormat = state.oldDateFormat = dateFormat;
    list.show(state);
}

/// The longest slice of a search for what keeps an expression busy, in messages of a megabyte.
bool hugeMessages() {
    EventList list;
    ArrangedEvents events(list);
    std::string message;
    for (std::uint64_t number = 0; message.size() < std::size_t{1} << 20U; ++number) {
        message += "abx01 cd"[(number * number * 7919 >> 5U) % 8];
    }
    for (int i = 0; i < 50; ++i) {
        list.insertRaw({"1767225600", "Kern.Warning", "10.0.0.1", message, {}});
    }
    bool reached = true;
    for (const char *text : {"x.{90}[yz]", "\\b(a|b).{100}\\b[xz]=", "([abcd01 ]+x)+$"}) {
        const Search search = timeOf(events, {}, textFilter(text, true));
        reached &= report(std::string("longest slice in messages of 1 MB, ") + text,
                          search.longestSlice, "s", true, 0.05);
    }
    return reached;
}

class FindBench {
public:
    FindBench(EventList &list, std::filesystem::path file)
        : m_list(list), m_events(list), m_file(std::move(file)) {}

    bool text(const std::string &text, bool isExpression) {
        const double ripgrep =
            bestOf(std::string(isExpression ? "rg -c -i '" : "rg -c -i -F '") + text + "' '" +
                   m_file.string() + "' > /dev/null || [ $? = 1 ]");
        const Search search = timeOf(m_events, {}, textFilter(text, isExpression));
        std::printf("%s: %zu found in %.3f s, ripgrep %.3f s\n", text.c_str(), search.found,
                    search.seconds, ripgrep);
        bool reached = report("finding " + text, search.seconds / ripgrep, "of rg", true, 1);
        reached &= report("longest slice meanwhile", search.longestSlice, "s", true, 0.05);
        return reached;
    }
    /// Each date is read in its old format and rendered in a new one on the way.
    bool textAfterShowing(const std::string &text) {
        const double ripgrep =
            bestOf("rg -c -i -F '" + text + "' '" + m_file.string() + "' > /dev/null");
        m_events.setFilter({});
        show(m_list, "dd.MM.yyyy HH:mm:ss");
        const ProcessorWatch watch;
        m_events.setFilter(textFilter(text));
        m_events.search([] { return false; });
        return report("finding " + text + " first after a change of the date format",
                      watch.seconds() / ripgrep, "of rg", true, 1);
    }
    bool narrowed(const std::string &before, const std::string &text) {
        const Search whole = timeOf(m_events, {}, textFilter(text));
        const Search search = timeOf(m_events, textFilter(before), textFilter(text));
        std::printf("%s after %s: %.1f ms\n", text.c_str(), before.c_str(), search.seconds * 1e3);
        return report("one more letter, " + text + ", times a search of its own",
                      search.seconds / whole.seconds, "", true, 1);
    }
    bool alone(const char *what, const EventQuery &filter) {
        const Search search = timeOf(m_events, {}, filter);
        std::printf("%s: %zu found\n", what, search.found);
        bool reached = report(what, search.seconds, "s", true, 0.02);
        reached &= report("longest slice meanwhile", search.longestSlice, "s", true, 0.05);
        return reached;
    }
    bool arrivals() {
        double without = 1e9;
        double with = 1e9;
        for (int round = 0; round < kRounds; ++round) {
            without = std::min(without, arrivalsTake({}));
            with = std::min(with, arrivalsTake(textFilter("sshd")));
        }
        std::printf("an arrival: %.0f ns, with a filter %.0f ns\n", without * 1e9 / kArrivals,
                    with * 1e9 / kArrivals);
        return report("an arrival with a filter, times one without", with / without, "", true, 1.1);
    }

private:
    double arrivalsTake(const EventQuery &filter) {
        m_events.setFilter(filter);
        m_events.search([] { return false; });
        AppState state;
        state.newDateFormat = "yyyy-MM-dd HH:mm:ss";
        const ProcessorWatch watch;
        for (int i = 0; i < kArrivals; ++i) {
            m_list.insertShown({"1767225600",
                                "Kern.Warning",
                                "10.0.0.1",
                                "sshd[1]: Accepted publickey for operator from 10.20.1.7",
                                {}},
                               state);
        }
        return watch.seconds();
    }

    EventList &m_list;
    ArrangedEvents m_events;
    std::filesystem::path m_file;
};

int run(const std::filesystem::path &folder) {
    const auto file = folder / "sample.log";
    writeSampleLog(file, kLines, kSpacing);
    EventList list;
    load(list, file);
    show(list, "yyyy-MM-dd HH:mm:ss");
    FindBench bench(list, file);
    bool reached = bench.text("vlan120", false);
    reached &= bench.text("0x7f0000ab", false);
    reached &= bench.text("e", false);
    reached &= bench.text("changed state 12[0-9]{3}", true);
    reached &= bench.text("(accepted|denied).*52144", true);
    reached &= bench.narrowed("0x7f0000a", "0x7f0000ab");
    reached &= bench.narrowed("vlan12", "vlan120");
    reached &= bench.narrowed("e", "er");
    EventQuery filter;
    filter.ratings.set(3);
    reached &= bench.alone("severe alone", filter);
    filter = {};
    filter.host = "10.0.1?.*";
    reached &= bench.alone("host alone", filter);
    filter = {};
    filter.from = 1767225600 + 20'000;
    filter.until = *filter.from + 3600;
    reached &= bench.alone("time alone", filter);
    reached &= bench.textAfterShowing("vlan120");
    reached &= bench.arrivals();
    reached &= hugeMessages();
    std::filesystem::remove(file);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER\n", argv[0]);
        return 2;
    }
    return quorbel::bench::run(argv[1]);
}
