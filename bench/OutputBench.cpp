// What outputs cost those who store, and how fast a feed reads.

#include "platform/UniqueFd.h"
#include "service/output/EventFeed.h"
#include "service/output/ForwardOutput.h"
#include "support/TemporaryFolder.h"

#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace quorbel {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kEvents = 1'000'000;
constexpr int kTurn = 100;
constexpr int kRounds = 5;
constexpr std::int64_t kTime = 1700000000;

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// As many as came with one look at the network.
std::string turnOf(int number) {
    std::string lines;
    for (int i = 0; i < kTurn; ++i) {
        lines += std::to_string(kTime) + ",Daemon.Notice,10.1.2." + std::to_string(i) +
                 ",app[17]: connection " + std::to_string(number * kTurn + i) +
                 " from 192.0.2.17 closed after 12 s, 3411 bytes in, 20211 bytes out\r\n";
    }
    return lines;
}

/// A process that takes what comes and throws it away.
class Sink {
public:
    Sink() {
        const UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *generic = reinterpret_cast<sockaddr *>(&address);
        ::bind(socket.get(), generic, size);
        ::listen(socket.get(), 8);
        ::getsockname(socket.get(), generic, &size);
        m_port = ntohs(address.sin_port);
        m_pid = ::fork();
        if (m_pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            while (true) {
                const UniqueFd connection(::accept(socket.get(), nullptr, nullptr));
                static std::array<char, 1U << 20U> ignored{};
                while (::recv(connection.get(), ignored.data(), ignored.size(), 0) > 0) {
                }
            }
        }
    }
    ~Sink() {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;
    [[nodiscard]] std::uint16_t port() const { return m_port; }

private:
    pid_t m_pid = -1;
    std::uint16_t m_port = 0;
};

enum class With { kNone, kIdle, kBusy };

/// Events a second; `perSecond` 0: as fast as it goes. Then the time is that of the thread that
/// stores, in processor seconds otherwise.
double store(With with, std::uint16_t port, int perSecond, int events) {
    const testing::TemporaryFolder folder;
    LogStore log(folder.path());
    log.prepare();
    std::unique_ptr<ForwardOutput> output;
    if (with != With::kNone) {
        ForwardSettings settings;
        settings.name = "bench";
        settings.server = "127.0.0.1";
        // Nobody is there: it waits to try again.
        settings.port = with == With::kBusy ? port : 1;
        settings.protocol = ForwardSettings::Protocol::kTcp;
        output = std::make_unique<ForwardOutput>(log, folder.path() / "outputs", settings);
        output->start();
    }
    const std::string lines = turnOf(0);
    timespec before{};
    timespec after{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
    const auto begin = Clock::now();
    for (int done = 0; done < events; done += kTurn) {
        log.append(lines, kTime, false);
        if (perSecond > 0) {
            std::this_thread::sleep_until(
                begin + std::chrono::duration<double>(static_cast<double>(done) / perSecond));
        }
    }
    const double elapsed = secondsSince(begin);
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
    const double cpu = static_cast<double>(after.tv_sec - before.tv_sec) +
                       static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e9;
    if (output) {
        output->stop();
    }
    return events / (perSecond > 0 ? cpu : elapsed);
}

void storing(std::uint16_t port, int perSecond, int events) {
    std::array<double, 3> best{};
    for (int round = 0; round < kRounds; ++round) {
        for (const With with : {With::kNone, With::kIdle, With::kBusy}) {
            double &one = best.at(static_cast<std::size_t>(with));
            one = std::max(one, store(with, port, perSecond, events));
        }
    }
    std::printf("storing%s: %.0f without, %.2f of that with an idle output, %.2f with a busy one\n",
                perSecond > 0 ? " 20,000 a second, events a processor second" : ", events a second",
                best[0], best[1] / best[0], best[2] / best[0]);
}

void reading(bool kept, std::size_t pieceSize) {
    const testing::TemporaryFolder folder;
    LogStore log(folder.path());
    log.prepare();
    for (int turn = 0; turn < kEvents / kTurn; ++turn) {
        log.append(turnOf(turn), kTime, false);
    }
    double best = 0;
    for (int round = 0; round < kRounds; ++round) {
        EventFeed feed(log, folder.path() / "outputs",
                       {"bench" + std::to_string(round), kept, true});
        std::uint64_t events = 0;
        const auto begin = Clock::now();
        while (const auto piece = feed.take(pieceSize)) {
            forEachEvent(*piece,
                         [&](std::uint64_t /*number*/, const LogLine & /*line*/) { ++events; });
            feed.acknowledge(piece->first + piece->count);
        }
        best = std::max(best, static_cast<double>(events) / secondsSince(begin));
    }
    std::printf("reading through a feed%s, each piece acknowledged: %.0f events a second\n",
                kept ? " that keeps its pieces" : "", best);
}

void forwarding(std::uint16_t port) {
    const testing::TemporaryFolder folder;
    LogStore log(folder.path());
    log.prepare();
    for (int turn = 0; turn < kEvents / kTurn; ++turn) {
        log.append(turnOf(turn), kTime, false);
    }
    ForwardSettings settings;
    settings.name = "bench";
    settings.server = "127.0.0.1";
    settings.port = port;
    settings.protocol = ForwardSettings::Protocol::kTcp;
    settings.history = true;
    const auto begin = Clock::now();
    ForwardOutput output(log, folder.path() / "outputs", settings, std::chrono::milliseconds(0));
    output.start();
    while (output.state().sent < kEvents && secondsSince(begin) < 120) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    std::printf("forwarding a backlog over TCP: %.0f events a second\n",
                kEvents / secondsSince(begin));
    output.stop();
}

}  // namespace
}  // namespace quorbel

int main() {
    using namespace quorbel;
    const Sink sink;
    storing(sink.port(), 0, kEvents);
    storing(sink.port(), 20'000, 60'000);
    reading(false, std::size_t{256} << 10U);
    reading(true, std::size_t{1} << 20U);
    forwarding(sink.port());
}
