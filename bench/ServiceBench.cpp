// Messages stored by the service, against a widely used syslog server with its own inputs that
// writes one file: bench_service RSYSLOG, the folder that its packages were unpacked into. Sender,
// messages and machine are the same, and the two take turns. Then with a receiver on the bus, which
// is all that is measured without the folder.

#include "Measure.h"
#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "platform/UniqueFd.h"
#include "platform/bus/NotificationObserver.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
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

/// Sends a flood and returns how many messages a second were stored, from the first that was sent
/// to the last that is in the files. Exits when one is missing.
double storedPerSecond(std::uint16_t port, Transport transport,
                       const std::filesystem::path &output) {
    Plan plan;
    plan.port = port;
    plan.transport = transport;
    plan.count = transport == Transport::kUdp ? 400'000 : 800'000;
    // Half of what either asks its socket to hold.
    plan.mostQueued = std::uint64_t{16} << 20U;
    load::LineCounter lines(output);
    const std::uint64_t before = lines.count();
    const Stopwatch watch;
    load::send(plan);
    const bool complete =
        waitUntil([&] { return lines.count() - before >= plan.count; }, std::chrono::seconds(60));
    const double rate = static_cast<double>(plan.count) / watch.seconds();
    if (!complete) {
        std::fprintf(stderr, "Only %lu of %lu messages were stored in %s\n", lines.count() - before,
                     plan.count, output.c_str());
        std::exit(2);
    }
    return rate;
}

std::uint16_t freePort() {
    const UniqueFd probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(probe.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        ::getsockname(probe.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        std::fprintf(stderr, "No port is free\n");
        std::exit(2);
    }
    return ntohs(address.sin_port);
}

bool isListening(std::uint16_t port) {
    const UniqueFd probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(probe.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

/// The yardstick, with its usual inputs and one file.
class Yardstick {
public:
    explicit Yardstick(const std::filesystem::path &packages) {
        const std::string port = std::to_string(m_port);
        const auto configuration =
            m_folder.write("rsyslog.conf", "global(workDirectory=\"" + m_folder.path().string() +
                                               "\")\n"
                                               "module(load=\"imudp\")\nmodule(load=\"imtcp\")\n"
                                               "input(type=\"imudp\" port=\"" +
                                               port +
                                               "\" rcvbufSize=\"32m\")\n"
                                               "input(type=\"imtcp\" port=\"" +
                                               port + "\")\naction(type=\"omfile\" file=\"" +
                                               output().string() + "\")\n");
        const std::string libraries = (packages / "usr/lib/x86_64-linux-gnu").string();
        const std::string modules = libraries + "/rsyslog";
        const std::string program = (packages / "usr/sbin/rsyslogd").string();
        const std::string pidFile = (m_folder.path() / "pid").string();
        m_process = ::fork();
        if (m_process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::setenv("LD_LIBRARY_PATH", libraries.c_str(), 1);
            ::execl(program.c_str(), program.c_str(), "-n", "-f", configuration.c_str(), "-i",
                    pidFile.c_str(), "-M", modules.c_str(), nullptr);
            ::_exit(127);
        }
        if (!waitUntil([this] { return isListening(m_port); })) {
            std::fprintf(stderr, "%s does not start\n", program.c_str());
            std::exit(2);
        }
    }
    ~Yardstick() {
        ::kill(m_process, SIGTERM);
        ::waitpid(m_process, nullptr, 0);
    }
    Yardstick(const Yardstick &) = delete;
    Yardstick &operator=(const Yardstick &) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] std::filesystem::path output() const { return m_folder.path() / "messages"; }

private:
    testing::TemporaryFolder m_folder;
    std::uint16_t m_port = freePort();
    pid_t m_process = -1;
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
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
