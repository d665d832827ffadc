// The timeline over two million events: what counting and painting take of a frame.

#include "Measure.h"
#include "SampleList.h"
#include "SampleLog.h"
#include "core/ArrangedEvents.h"
#include "core/EventHold.h"
#include "events/timeline/Timeline.h"

#include <QApplication>
#include <QWheelEvent>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

namespace quorbel::bench {
namespace {

constexpr std::uint64_t kLines = 2'000'000;
constexpr double kFrame = 0.005;  // seconds
constexpr const char *kDateFormat = "yyyy-MM-dd HH:mm:ss";

class TimelineBench {
public:
    explicit TimelineBench(EventList &list) : m_list(list), m_events(list), m_hold(list) {}

    bool run() {
        bool reached = arrivals();
        m_timeline.attach(m_events, m_hold);
        m_timeline.resize(2504, m_timeline.sizeHint().height());
        m_timeline.show();
        reached &= counting("counting all, ");
        reached &= looking("looking around");
        EventQuery filter;
        filter.host = "10.0.1?.*";
        m_events.setFilter(filter);
        m_events.search([] { return false; });
        std::printf("%zu events match\n", m_events.size());
        reached &= counting("counting what matches, ");
        reached &= looking("looking around with a filter");
        m_timeline.setGrouping(EventGrouping::kHost);
        reached &= counting("counting by host, ");
        reached &= looking("looking around by host with a filter");
        m_events.setFilter({});
        m_timeline.detach();
        return reached;
    }

private:
    /// Turns the event loop for longer than all is counted and painted in.
    bool counting(const std::string &what) {
        double longest = 0;
        for (const Stopwatch all; all.seconds() < 2;) {
            const ProcessorWatch turn;
            QApplication::processEvents();
            longest = std::max(longest, turn.seconds());
        }
        return report(what + "longest turn", longest * 1000, "ms", true, kFrame * 1000);
    }
    void wheel(int turn, int sideways) {
        const QPointF place(m_timeline.width() * 2.0 / 3, 10);
        QWheelEvent event(place, m_timeline.mapToGlobal(place), {}, {sideways, turn}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&m_timeline, &event);
        m_timeline.repaint();
    }
    bool looking(const std::string &what) {
        double longest = 0;
        const ProcessorWatch all;
        constexpr int kSteps = 28;
        for (int step = 0; step < kSteps; ++step) {
            const ProcessorWatch frame;
            const bool isFirstHalf = step < kSteps / 2;
            wheel(isFirstHalf ? 120 : -120, 90);
            longest = std::max(longest, frame.seconds());
        }
        std::printf("%s: %.2f ms a frame\n", what.c_str(), all.seconds() / kSteps * 1000);
        return report(what + ", longest frame", longest * 1000, "ms", true, kFrame * 1000);
    }
    bool arrivals() {
        const double without = arrivalsTake();
        TimelineCounts counts(m_events, EventGrouping::kRating);
        for (const Stopwatch watch; watch.seconds() < 3 && counts.all().isEmpty();) {
            QApplication::processEvents();
        }
        const double with = arrivalsTake();
        return report("an arrival with the timeline, times one without", with / without, "", true,
                      1.5);
    }
    double arrivalsTake() {
        const AppState state = stateWithFormat(kDateFormat);
        double best = 1e9;
        for (int round = 0; round < 3; ++round) {
            const Stopwatch watch;
            for (int i = 0; i < 100'000; ++i) {
                m_list.insertShown({"1767305700",
                                    "Kern.Warning",
                                    "10.0.0.1",
                                    "sshd[1]: Accepted publickey for operator from 10.20.1.7",
                                    {}},
                                   state);
            }
            best = std::min(best, watch.seconds());
            m_list.removeRows({{0, 100'000}});
        }
        return best;
    }

    EventList &m_list;
    ArrangedEvents m_events;
    EventHold m_hold;
    Timeline m_timeline;
};

int run(const std::filesystem::path &folder) {
    const auto file = folder / "sample.log";
    bool reached = true;
    // A day's flood, and a month and a half with nearly each event in a second of its own.
    for (const double spacing : {0.04, 2.0}) {
        std::printf("an event every %.2f s\n", spacing);
        writeSampleLog(file, kLines, spacing);
        EventList list;
        addSamples(list, file);
        list.show(stateWithFormat(kDateFormat));
        reached &= TimelineBench(list).run();
    }
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
    const QApplication application(argc, argv);
    return quorbel::bench::run(argv[1]);
}
