// Two million events whose messages are packed, beside the same two million whose messages are not:
// memory, and what looking at them costs. Both in turns, in processor time.

#include "Measure.h"
#include "SampleList.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/AppDelegate.h"
#include "core/ArrangedEvents.h"
#include "core/MessagePacking.h"
#include "events/EventTableView.h"
#include "events/ScanView.h"
#include "platform/gui/Storyboard.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::bench {
namespace {

constexpr double kSpacing = 0.04;
constexpr int kRounds = 5;
constexpr int kAnywhere = 10'000;
constexpr double kMost = 1.2;
constexpr const char *kFormat = "yyyy-MM-dd HH:mm:ss";

/// The events' page with the events of a sample log.
class Events {
public:
    explicit Events(const std::filesystem::path &log) : page(delegate, storyboard) {
        page.viewDidLoad();
        page.resize(1200, 800);
        addSamples(delegate.events, log);
        delegate.state = stateWithFormat(kFormat);
        page.show();
        QApplication::processEvents();
    }
    [[nodiscard]] EventList &list() { return delegate.events; }

    AppDelegate delegate;
    Storyboard storyboard;
    ScanView page;
};

/// Packs what is to be packed; the longest time that it took of this thread in one turn.
double packAll(EventList &list) {
    MessagePacking packing(list);
    double longest = 0;
    for (bool isBusy = true; isBusy;) {
        const ProcessorWatch turn;
        isBusy = packing.step();
        longest = std::max(longest, turn.seconds());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return longest;
}

using Work = std::function<void(Events &)>;

/// The best times of some work: of this thread's, by the clock, and of all threads'.
struct Times {
    double processor = 1e9;
    double clock = 1e9;
    double all = 1e9;
    void add(Events &events, const Work &work) {
        const ProcessorWatch watch;
        const Stopwatch clockWatch;
        const std::clock_t start = std::clock();
        work(events);
        processor = std::min(processor, watch.seconds());
        clock = std::min(clock, clockWatch.seconds());
        all = std::min(all, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
};

/// The time of the work with packed messages, by that with others; by the clock as well where other
/// threads take part.
enum class Done { kHere, kByAll };
bool compare(const char *what, Events &plain, Events &packed, const Work &work,
             Done done = Done::kHere, int rounds = kRounds) {
    Times before;
    Times now;
    for (int round = 0; round < rounds; ++round) {
        before.add(plain, work);
        now.add(packed, work);
    }
    std::printf("%s: %.1f ms, packed %.1f ms; by the clock %.1f and %.1f ms; all threads %.1f ms\n",
                what, before.processor * 1e3, now.processor * 1e3, before.clock * 1e3,
                now.clock * 1e3, now.all * 1e3);
    const auto reported = [&](const char *how, double ratio) {
        return report(std::string(what) + how, ratio, "of the time", true, kMost);
    };
    const bool isHere = reported(", packed by plain", now.processor / before.processor);
    return done == Done::kHere
               ? isHere
               : reported(", packed by plain, clock", now.clock / before.clock) && isHere;
}

void search(Events &events, const std::vector<TextPattern::Spec> &texts) {
    ArrangedEvents arranged(events.list());
    EventQuery query;
    for (const TextPattern::Spec &text : texts) {
        query.texts.push_back({text, false});
    }
    arranged.setFilter(query);
    arranged.search([] { return false; });
}

/// Goes to places all over the list and paints what is there.
void jump(Events &events) {
    auto &bar = *events.page.findChild<EventTableView *>()->verticalScrollBar();
    std::mt19937 random(3);
    for (int i = 0; i < 100; ++i) {
        bar.setValue(static_cast<int>(random() % static_cast<unsigned>(bar.maximum())));
        events.page.grab();
    }
}

/// Looks at messages all over the list.
void lookAnywhere(Events &events) {
    std::mt19937 random(4);
    std::size_t bytes = 0;
    for (int i = 0; i < kAnywhere; ++i) {
        bytes += events.list().message(random() % events.list().size())->size();
    }
    if (bytes == 0) {
        std::exit(2);
    }
}

/// All fields of all rows, as an export or a deletion reads them.
void readAll(Events &events) {
    EventList &list = events.list();
    std::size_t bytes = 0;
    for (std::size_t row = 0; row < list.size(); ++row) {
        bytes += list.date(row)->size() + list.priority(row)->size() + list.host(row)->size() +
                 list.message(row)->size();
    }
    if (bytes == 0) {
        std::exit(2);
    }
}

/// Finds the events of removal notices, the oldest ones.
void findAnnounced(Events &events) {
    for (std::uint64_t number = 0; number < 100'000; ++number) {
        const std::string line = sampleLine(number, kSpacing);
        const auto fields = splitLogLine(line);
        if (!events.list().find({fields->date, fields->priority, fields->host, fields->message, {}},
                                kFormat)) {
            std::exit(2);
        }
    }
}

void setAsideAndPutBack(Events &events) {
    events.list().setAside({{0, events.list().size()}});
    events.list().putBack();
}

void removeEverySecondRun(Events &events) {
    std::vector<RowRange> ranges;
    for (std::size_t row = 0; row + 2000 < events.list().size(); row += 2000) {
        ranges.push_back({row, 1000});
    }
    events.list().removeRows(ranges);
}

bool run(const std::filesystem::path &folder, std::uint64_t lines) {
    const auto log = folder / "packing.log";
    const std::size_t bytes = writeSampleLog(log, lines, kSpacing);
    { const Events warmUp(folder / "none"); }

    const std::size_t before = residentBytes();
    auto packed = std::make_unique<Events>(log);
    const std::size_t loaded = residentBytes() - before;
    const Stopwatch watch;
    const double longest = packAll(packed->list());
    std::printf("%llu events packed in %.2f s\n", static_cast<unsigned long long>(lines),
                watch.seconds());
    const std::size_t resident = residentBytes() - before;
    const auto part = [bytes](std::size_t memory) {
        return static_cast<double>(memory) / static_cast<double>(bytes);
    };
    std::printf("bytes an event: %.1f, packed %.1f; of the file %.2f, %.2f\n",
                static_cast<double>(loaded) / static_cast<double>(lines),
                static_cast<double>(resident) / static_cast<double>(lines), part(loaded),
                part(resident));
    bool reached = report("resident memory when packed, times the file", part(resident), "of bytes",
                          true, 0.4);
    reached &= report("longest turn of the main thread while packing", longest, "s", true, 0.005);

    auto plain = std::make_unique<Events>(log);
    const auto both = [&](const char *what, const Work &work, int rounds = kRounds) {
        reached &= compare(what, *plain, *packed, work, Done::kHere, rounds);
    };
    const auto searching = [&](const char *what, const std::vector<TextPattern::Spec> &texts) {
        reached &= compare(
            what, *plain, *packed, [&texts](Events &events) { search(events, texts); },
            Done::kByAll);
    };
    searching("searching a text that nothing has", {{"xyzzy"}});
    searching("searching a text that a sixth has", {{"publickey"}});
    searching("searching a text that nearly all have", {{"e"}});
    searching("searching two texts", {{"publickey"}, {"operator"}});
    searching("searching an expression", {{"(accepted|denied) .*7", false, true}});
    searching("searching a text and an expression", {{"publickey"}, {"7[0-9]*3", false, true}});
    both("painting 100 places", jump);
    Times anywhere;
    anywhere.add(*packed, lookAnywhere);
    reached &= report("a look at a row anywhere, packed", anywhere.processor / kAnywhere, "s", true,
                      0.0002);
    both("reading all rows", readAll);
    both("finding 100,000 events of removal notices", findAnnounced);
    both("deleting all and undoing it", setAsideAndPutBack);
    both("removing a thousand of each two thousand", removeEverySecondRun, 1);
    std::filesystem::remove(log);
    return reached;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER [EVENTS]\n", argv[0]);
        return 2;
    }
    setenv("QUORBEL_LIBRARY", argv[1], 1);                           // NOLINT
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);  // NOLINT
    const std::uint64_t events = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 2'000'000;
    return quorbel::bench::run(argv[1], events) ? 0 : 1;
}
