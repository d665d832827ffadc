// Messages stored by the service, against a widely used syslog server with its own inputs that
// writes one file: bench_service RSYSLOG, the folder that its packages were unpacked into. Sender,
// messages and machine are the same, and the two take turns. Then with a receiver on the bus, which
// is all that is measured without the folder.

#include "Measure.h"
#include "Storing.h"
#include "Yardstick.h"
#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "platform/bus/NotificationObserver.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel::bench {
namespace {

using load::Plan;
using testing::waitUntil;
using Transport = Plan::Transport;

constexpr std::size_t kRounds = 3;

/// Sends a flood and returns how many messages a second were stored. Exits when one is missing.
double storedPerSecond(std::uint16_t port, Transport transport,
                       const std::filesystem::path &output) {
    Plan plan;
    plan.port = port;
    plan.transport = transport;
    plan.count = transport == Transport::kUdp ? 400'000 : 800'000;
    return store(plan, ::getpid(), output).perSecond;
}

bool compare(const char *name, Transport transport, const std::filesystem::path &packages) {
    std::vector<double> ratios;
    std::vector<double> ours;
    for (std::size_t round = 0; round < kRounds; ++round) {
        const Yardstick yardstick(packages);
        const double theirs = storedPerSecond(yardstick.port(), transport, yardstick.output());
        const testing::TemporaryFolder library;
        const testing::ServiceProcess service({library.path(), "", {"--port", "0"}});
        ours.push_back(storedPerSecond(service.port(), transport, library.path()));
        ratios.push_back(ours.back() / theirs);
        std::printf("  %s: %.0f/s stored, yardstick %.0f/s\n", name, ours.back(), theirs);
    }
    return report(std::string("messages stored over ") + name + ", times rsyslog's rate",
                  median(ratios), "", false, 1.0);
}

/// Somebody on the bus who is told of every event, on a thread of its own.
class Receiver {
public:
    Receiver() : m_observer([this](const NotificationObserver::UserInfo &) { ++m_told; }) {
        m_observer.waitUntilConnected(testing::kPatience);
        m_thread = std::thread([this] { receive(); });
    }
    ~Receiver() {
        m_stop = true;
        m_thread.join();
    }
    Receiver(const Receiver &) = delete;
    Receiver &operator=(const Receiver &) = delete;

    [[nodiscard]] std::uint64_t told() const { return m_told; }

private:
    void receive() {
        constexpr std::chrono::milliseconds kSlice{50};
        while (!m_stop) {
            pollfd input{m_observer.fd(), m_observer.events(), 0};
            ::poll(&input, 1, static_cast<int>(kSlice.count()));
            while (m_observer.dispatch(kSlice) && !m_stop) {
            }
        }
    }

    std::atomic<std::uint64_t> m_told = 0;
    std::atomic<bool> m_stop = false;
    NotificationObserver m_observer;
    std::thread m_thread;
};

/// With a bus on which nobody listens.
double storedPerSecondUnheard(Transport transport) {
    const testing::PrivateBus bus;
    const testing::TemporaryFolder library;
    const testing::ServiceProcess service({library.path(), bus.address(), {"--port", "0"}});
    service.waitForJournal("Connected to the system bus");
    return storedPerSecond(service.port(), transport, library.path());
}

/// Says what the receiver was told. Exits when events are neither told nor counted as dropped.
double storedPerSecondHeard(const char *name, Transport transport) {
    const testing::PrivateBus bus;
    const testing::TemporaryFolder library;
    testing::ServiceProcess service({library.path(), bus.address(), {"--port", "0"}});
    service.waitForJournal("Connected to the system bus");
    const Receiver receiver;
    const Stopwatch watch;
    const double rate = storedPerSecond(service.port(), transport, library.path());
    const double toldRate = static_cast<double>(receiver.told()) / watch.seconds();
    service.terminate();
    const std::string journal = service.journal();
    const std::uint64_t stored = load::counter(journal, "stored");
    const std::uint64_t dropped = load::counter(journal, "notifications dropped");
    waitUntil([&] { return receiver.told() + dropped >= stored; });
    std::printf(
        "  %s, with a receiver on the bus: %.0f/s stored, %.0f/s told meanwhile; of %lu events %lu "
        "were told and %lu counted as dropped\n",
        name, rate, toldRate, stored, receiver.told(), dropped);
    if (receiver.told() + dropped != stored) {
        std::fprintf(stderr, "What was told and dropped is not what was stored\n");
        std::exit(2);
    }
    return rate;
}

/// What a receiver costs has no aim.
void measureWithBus(const char *name, Transport transport) {
    std::vector<double> ratios;
    for (std::size_t round = 0; round < kRounds; ++round) {
        const double unheard = storedPerSecondUnheard(transport);
        ratios.push_back(storedPerSecondHeard(name, transport) / unheard);
        std::printf("  %s, with nobody who listens: %.0f/s stored\n", name, unheard);
    }
    std::printf("  %s, rate with a receiver by that without: %.2f, median of %zu pairs\n", name,
                median(ratios), kRounds);
}

}  // namespace
}  // namespace quorbel::bench

int main(int count, char **values) {
    using namespace quorbel;
    if (count > 2) {
        std::fputs("Usage: bench_service [RSYSLOG-FOLDER]\n", stderr);
        return 2;
    }
    bool reached = true;
    for (const auto &[name, transport] : {std::pair("UDP", load::Plan::Transport::kUdp),
                                          std::pair("TCP", load::Plan::Transport::kTcp)}) {
        reached = (count == 1 || bench::compare(name, transport, values[1])) && reached;
        bench::measureWithBus(name, transport);
    }
    return reached ? EXIT_SUCCESS : EXIT_FAILURE;
}
