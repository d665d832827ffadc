// The window under a flood, from the network to its list: bench_flood RSYSLOG SECONDS [PER-SECOND],
// the folder that the packages of a widely used syslog server were unpacked into, how long to send,
// and how fast: flat out, unless it is said. Its rate, which tells nobody, is what storing is
// measured against; sender, messages and machine are the same.

#include "Measure.h"
#include "Yardstick.h"
#include "core/EventList.h"
#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <string>
#include <thread>

namespace quorbel::bench {
namespace {

using load::Plan;
using Transport = Plan::Transport;

/// More than any flood has.
constexpr std::uint64_t kEndless = std::uint64_t{1} << 40U;

struct Pace {
    std::chrono::seconds span;
    std::uint64_t perSecond = 0;  ///< 0: as fast as possible
};

/// Sends for that long, on a thread of its own; how many were sent.
std::future<std::uint64_t> flood(std::uint16_t port, Transport transport, const Pace &pace) {
    return std::async(std::launch::async, [=] {
        Plan plan;
        plan.port = port;
        plan.transport = transport;
        plan.count = kEndless;
        plan.perSecond = pace.perSecond;
        plan.mostQueued = std::uint64_t{16} << 20U;
        std::atomic<bool> stop = false;
        std::thread clock([&] {
            std::this_thread::sleep_for(pace.span);
            stop = true;
        });
        const std::uint64_t sent = load::send(plan, &stop).count;
        clock.join();
        return sent;
    });
}

bool isOver(const std::future<std::uint64_t> &sending) {
    return sending.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

/// Messages a second from the first that was sent to the last that is stored. Exits when not all
/// are. `meanwhile` is called all the time.
double storedPerSecond(std::uint16_t port, Transport transport, const Pace &pace,
                       const std::filesystem::path &output,
                       const std::function<void()> &meanwhile) {
    load::LineCounter lines(output);
    const Stopwatch watch;
    std::future<std::uint64_t> sending = flood(port, transport, pace);
    while (!isOver(sending)) {
        meanwhile();
    }
    const std::uint64_t sent = sending.get();
    // Looking costs both as much.
    while (lines.count() < sent) {
        if (watch.seconds() > 10.0 * static_cast<double>(pace.span.count())) {
            std::fprintf(stderr, "Only %lu of %lu messages were stored\n", lines.count(), sent);
            std::exit(2);
        }
        meanwhile();
    }
    return static_cast<double>(sent) / watch.seconds();
}

double yardstickRate(Transport transport, const Pace &pace, const std::filesystem::path &packages) {
    const Yardstick yardstick(packages);
    return storedPerSecond(yardstick.port(), transport, pace, yardstick.output(),
                           [] { std::this_thread::sleep_for(std::chrono::milliseconds(5)); });
}

std::int64_t counted(const AppState &state) {
    return state.iEmergency + state.iAlert + state.iCritical + state.iError + state.iWarning +
           state.iNotice + state.iInformation + state.iDebug + state.iUnknown;
}

struct Outcome {
    double stored = 0;     ///< a second
    double taken = 0;      ///< in by the window, a second, while it is flooded
    double stall = 0;      ///< the longest turn of its loop, without what follows
    double wait = 0;       ///< the longest time in a turn that others had the processors
    double perSecond = 0;  ///< taken in a second of the main thread's processor time
    double after = 0;      ///< seconds until it has everything
    std::uint64_t dropped = 0;
    bool isExact = false;
};

Outcome floodWindow(Transport transport, const Pace &pace, Tab page) {
    const testing::PrivateBus bus;
    const testing::TemporaryFolder library;
    setenv("QUORBEL_LIBRARY", library.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    testing::ServiceProcess service({library.path(), bus.address(), {"--port", "0"}});
    service.waitForJournal("Connected to the system bus");
    const testing::FrontEnd frontEnd;
    frontEnd.window->selectTab(page);
    if (!frontEnd.waitUntilItHears()) {
        std::exit(2);
    }
    Outcome outcome;
    const auto turn = [&outcome] {
        const Stopwatch turned;
        const double before = crowdedSeconds();
        QApplication::processEvents(QEventLoop::AllEvents);
        const double crowded = crowdedSeconds() - before;
        outcome.stall = std::max(outcome.stall, turned.seconds() - crowded);
        outcome.wait = std::max(outcome.wait, crowded);
    };
    QTimer tick;
    tick.start(1);
    const Stopwatch watch;
    const ProcessorWatch used;
    outcome.stored = storedPerSecond(service.port(), transport, pace, library.path(), turn);
    outcome.taken = static_cast<double>(frontEnd.delegate.events.size()) / watch.seconds();
    load::LineCounter lines(library.path());
    const std::uint64_t stored = lines.count();
    const Stopwatch end;
    while (frontEnd.delegate.events.size() < stored && end.seconds() < 120) {
        turn();
    }
    outcome.after = end.seconds();
    outcome.perSecond = static_cast<double>(stored) / used.seconds();
    service.terminate();
    outcome.dropped = load::counter(service.journal(), "notifications dropped");
    outcome.isExact = load::counter(service.journal(), "stored") == stored &&
                      counted(frontEnd.delegate.state) == static_cast<std::int64_t>(stored);
    return outcome;
}

bool bench(const char *name, Transport transport, const Pace &pace,
           const std::filesystem::path &packages, Tab page) {
    const double theirs = yardstickRate(transport, pace, packages);
    const Outcome ours = floodWindow(transport, pace, page);
    const std::string what = std::string(" over ") + name +
                             (page == Tab::kEvents ? ", events on screen" : ", home on screen");
    std::printf(
        "  %s: %.0f/s stored, yardstick %.0f/s; %.0f/s taken in, %.0f in a second of the "
        "processor; %lu not told in time; the window waited for a processor for %.3f s at most\n",
        what.c_str(), ours.stored, theirs, ours.taken, ours.perSecond, ours.dropped, ours.wait);
    bool reached = report("stored with a window" + what + ", times rsyslog's rate",
                          ours.stored / theirs, "", false, 0.9);
    // What came last is taken in a moment later than it is stored.
    reached &= report("taken in by it, a second, by 500,000 or what came" + what,
                      ours.taken / std::min(500'000.0, ours.stored), "", false, 0.99);
    reached &= report("longest stall" + what, ours.stall, "s", true, 0.1);
    reached &= report("until everything is there" + what, ours.after, "s", true, 1.0);
    reached &= report("counters are the service's" + what, ours.isExact ? 1 : 0, "", false, 1.0);
    return reached;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    using namespace quorbel;
    const QApplication application(argc, argv);
    if (argc != 3 && argc != 4) {
        std::fputs("Usage: bench_flood RSYSLOG-FOLDER SECONDS [PER-SECOND]\n", stderr);
        return 2;
    }
    const bench::Pace pace{std::chrono::seconds(std::atoi(argv[2])),
                           argc == 4 ? std::strtoull(argv[3], nullptr, 10) : 0};
    bool reached = true;
    for (const Tab page : {Tab::kHome, Tab::kEvents}) {
        reached &= bench::bench("UDP", load::Plan::Transport::kUdp, pace, argv[1], page);
        reached &= bench::bench("TCP", load::Plan::Transport::kTcp, pace, argv[1], page);
    }
    return reached ? EXIT_SUCCESS : EXIT_FAILURE;
}
