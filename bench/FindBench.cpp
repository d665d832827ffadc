// Finding among two million events: the processor time until a result stands, beside ripgrep's over
// the same log file. Both search on one thread. And what a filter adds to an arrival.

#include "Measure.h"
#include "SampleList.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/AppDelegate.h"
#include "core/ArrangedEvents.h"
#include "core/EventIntake.h"
#include "events/ScanView.h"
#include "platform/gui/Storyboard.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

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

class NoHomePage : public HomePageLink {
public:
    [[nodiscard]] bool isOnScreen() const override { return false; }
    void setEventsStatus() override {}
    [[nodiscard]] int severityStatus() const override { return 0; }
};

/// Arrivals into the page of events, as the window takes them.
class ArrivalBench {
public:
    ArrivalBench() {
        m_page.viewDidLoad();
        m_page.resize(1200, 800);
        m_intake.initializeLog();
        m_delegate.state.newDateFormat = m_delegate.state.oldDateFormat = "yyyy-MM-dd HH:mm:ss";
        m_page.show();
        QApplication::processEvents();
        for (int number = 0; number < kArrivals; ++number) {
            m_lines.push_back(sampleLine(static_cast<std::uint64_t>(number), kSpacing));
        }
    }
    /// Without a filter, with one that a sixth of them meets, and with one that nearly all do.
    bool run() {
        std::array<Cost, kTexts.size()> costs;
        for (int round = 0; round < kRounds; ++round) {
            for (std::size_t i = 0; i < kTexts.size(); ++i) {
                find(kTexts[i]);
                arrive(costs[i]);
            }
        }
        bool reached = true;
        for (std::size_t i = 1; i < kTexts.size(); ++i) {
            const auto compare = [&](const char *what, double Cost::*part) {
                const double without = costs[0].*part;
                const double with = costs[i].*part;
                std::printf("%s: %.2f us, while finding %s %.2f us\n", what,
                            without * 1e6 / kArrivals, kTexts[i], with * 1e6 / kArrivals);
                return report(std::string(what) + " while finding " + kTexts[i] +
                                  ", times one without a filter",
                              with / without, "", true, 1.1);
            };
            reached &= compare("an arrival", &Cost::handling);
            reached &= compare("an arrival with what is painted", &Cost::all);
        }
        return reached;
    }

private:
    static constexpr std::array kTexts = {"", "vlan120", "e"};
    /// Processor time of all arrivals, the best of some rounds.
    struct Cost {
        double handling = 1e9;
        double all = 1e9;  ///< with what the window does between the slices
    };

    /// Returns when the result stands.
    void find(const char *text) {
        m_page.findChild<QLineEdit *>(QStringLiteral("findText"))->setText(QLatin1String(text));
        const auto *count = m_page.findChild<QLabel *>(QStringLiteral("eventCount"));
        const Stopwatch settling;
        while (count->text().contains(QStringLiteral(" of ")) != (*text != '\0') ||
               settling.seconds() < 1) {
            QApplication::processEvents();
        }
    }
    void arrive(Cost &cost) {
        constexpr std::chrono::milliseconds kSlice{8};
        double handling = 0;
        const ProcessorWatch all;
        for (auto line = m_lines.begin(); line != m_lines.end();) {
            const auto end = std::chrono::steady_clock::now() + kSlice;
            const ProcessorWatch slice;
            for (; line != m_lines.end() && std::chrono::steady_clock::now() < end; ++line) {
                const auto fields = splitLogLine(*line);
                m_intake.setNotification(
                    {fields->date, fields->priority, fields->host, fields->message, {}});
            }
            handling += slice.seconds();
            QApplication::processEvents();
        }
        cost.handling = std::min(cost.handling, handling);
        cost.all = std::min(cost.all, all.seconds());
    }

    AppDelegate m_delegate;
    Storyboard m_storyboard;
    ScanView m_page{m_delegate, m_storyboard};
    NoHomePage m_home;
    EventIntake m_intake{m_delegate.state, m_delegate.events, m_delegate.hold, m_page, m_home};
    std::vector<std::string> m_lines;
};

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
        m_list.show(stateWithFormat("dd.MM.yyyy HH:mm:ss"));
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

private:
    EventList &m_list;
    ArrangedEvents m_events;
    std::filesystem::path m_file;
};

int run(const std::filesystem::path &folder) {
    const auto file = folder / "sample.log";
    writeSampleLog(file, kLines, kSpacing);
    EventList list;
    addSamples(list, file);
    list.show(stateWithFormat("yyyy-MM-dd HH:mm:ss"));
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
    reached &= hugeMessages();
    setenv("QUORBEL_LIBRARY", folder.c_str(), 1);                    // NOLINT
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);  // NOLINT
    reached &= ArrivalBench().run();
    std::filesystem::remove(file);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER\n", argv[0]);
        return 2;
    }
    return quorbel::bench::run(argv[1]);
}
