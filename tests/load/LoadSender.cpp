#include "load/LoadSender.h"

#include "platform/UniqueFd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/udp.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace quorbel::load {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t kBlock = 64;

UniqueFd connectTo(std::uint16_t port, int type) {
    UniqueFd fd(::socket(AF_INET, type | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (!fd.isOpen() ||
        ::connect(fd.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        throw std::runtime_error("port " + std::to_string(port) + " cannot be reached");
    }
    return fd;
}

/// How many bytes wait in the UDP socket of that port, by the kernel's table of sockets.
std::uint64_t queuedBytes(std::uint16_t port) {
    std::uint64_t most = 0;
    for (const char *table : {"/proc/net/udp", "/proc/net/udp6"}) {
        std::ifstream stream(table);
        std::string line;
        while (std::getline(stream, line)) {
            unsigned local = 0;
            unsigned remote = 0;
            std::uint64_t queued = 0;
            if (std::sscanf(line.c_str(), " %*u: %*[^:]:%x %*[^:]:%x %*x %*x:%lx", &local, &remote,
                            &queued) == 3 &&
                local == port && remote == 0) {
                most = std::max(most, queued);
            }
        }
    }
    return most;
}

/// Where a plan stands: which numbers may be sent by now.
class Pace {
public:
    Pace(const Plan &plan, const std::atomic<bool> *stop) : m_plan(plan), m_stop(stop) {
        if (plan.perCall == 1) {
            // One that is to be sent alone must not wait for the next.
            m_wait = std::chrono::microseconds(10);
            ::prctl(PR_SET_TIMERSLACK, 1);
        }
    }

    /// How many messages of the next block are due; waits for the first of them. 0 at the end.
    std::uint64_t due() {
        while (m_taken < m_plan.count && !(m_stop != nullptr && *m_stop)) {
            const std::uint64_t most = std::min(m_most, m_plan.count - m_taken);
            if (m_plan.perSecond == 0) {
                return most;
            }
            const double elapsed = std::chrono::duration<double>(Clock::now() - m_start).count();
            const auto allowed =
                static_cast<std::uint64_t>(elapsed * static_cast<double>(m_plan.perSecond)) + 1;
            if (allowed > m_taken) {
                return std::min(most, allowed - m_taken);
            }
            std::this_thread::sleep_for(m_wait);
        }
        return 0;
    }
    void take(std::uint64_t count) { m_taken += count; }

    [[nodiscard]] std::uint64_t next() const { return m_plan.first + m_taken; }
    [[nodiscard]] Sent sent() const {
        return {m_taken, std::chrono::duration<double>(Clock::now() - m_start).count()};
    }

private:
    const Plan &m_plan;
    const std::atomic<bool> *m_stop;
    const std::uint64_t m_most = std::min<std::uint64_t>(kBlock, m_plan.perCall);
    std::chrono::microseconds m_wait{500};
    const Clock::time_point m_start = Clock::now();
    std::uint64_t m_taken = 0;
};

void waitForRoom(const Plan &plan, const std::atomic<bool> *stop) {
    while (queuedBytes(plan.port) > plan.mostQueued && !(stop != nullptr && *stop)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// Makes a message of the plan another one, which with a single priority differs in ten digits: a
/// sender that formats each would be slower than what it is to measure.
void renumber(std::string &message, const Plan &plan, std::uint64_t number) {
    constexpr std::string_view kBeforeNumber = "]: ";
    constexpr std::size_t kDigits = 10;
    const std::size_t found = message.find(kBeforeNumber);
    if (found == std::string::npos || plan.priorities.size() != 1) {
        message = syslogMessage(plan, number);
        return;
    }
    std::size_t at = found + kBeforeNumber.size() + kDigits;
    for (std::size_t i = 0; i < kDigits; ++i) {
        message[--at] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

/// Lets the kernel cut what is sent at once into datagrams: a flood is to find out what its
/// receiver can do, not its sender. False where that cannot be.
bool cutsIntoDatagrams(const UniqueFd &socket, const Plan &plan) {
    constexpr std::size_t kLargestSend = 60'000;
    const auto length = static_cast<int>(syslogMessage(plan, plan.first).size());
    return plan.cutByKernel && plan.perCall > 1 && plan.perSecond == 0 &&
           plan.priorities.size() == 1 &&
           kBlock * static_cast<std::size_t>(length) <= kLargestSend &&
           ::setsockopt(socket.get(), SOL_UDP, UDP_SEGMENT, &length, sizeof length) == 0;
}

Sent sendDatagrams(const Plan &plan, const std::atomic<bool> *stop) {
    constexpr std::uint64_t kBetweenLooks = 4096;
    const UniqueFd socket = connectTo(plan.port, SOCK_DGRAM);
    std::array<std::string, kBlock> messages;
    std::array<iovec, kBlock> parts{};
    std::array<mmsghdr, kBlock> headers{};
    const bool cut = cutsIntoDatagrams(socket, plan);
    Pace pace(plan, stop);
    std::uint64_t sinceLook = 0;
    while (const std::uint64_t block = pace.due()) {
        for (std::uint64_t i = 0; i < block; ++i) {
            renumber(messages[i], plan, pace.next() + i);
            parts[i] = {messages[i].data(), messages[i].size()};
            headers[i].msg_hdr.msg_iov = &parts[i];
            headers[i].msg_hdr.msg_iovlen = 1;
        }
        // What fails is an earlier datagram, which nobody took; this one goes out the next time.
        if (cut) {
            msghdr joined{};
            joined.msg_iov = parts.data();
            joined.msg_iovlen = block;
            pace.take(::sendmsg(socket.get(), &joined, 0) > 0 ? block : 0);
        } else {
            const int count =
                ::sendmmsg(socket.get(), headers.data(), static_cast<unsigned>(block), 0);
            pace.take(static_cast<std::uint64_t>(std::max(count, 0)));
        }
        sinceLook += block;
        if (plan.mostQueued != 0 && sinceLook >= kBetweenLooks) {
            waitForRoom(plan, stop);
            sinceLook = 0;
        }
    }
    return pace.sent();
}

/// Returns whether everything was sent.
bool sendAll(const UniqueFd &socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

Sent sendStreams(const Plan &plan, const std::atomic<bool> *stop) {
    std::vector<UniqueFd> sockets;
    for (std::size_t i = 0; i < plan.connections; ++i) {
        sockets.push_back(connectTo(plan.port, SOCK_STREAM));
    }
    Pace pace(plan, stop);
    std::string frames;
    for (std::size_t turn = 0; const std::uint64_t block = pace.due(); ++turn) {
        frames.clear();
        for (std::uint64_t i = 0; i < block; ++i) {
            frames += streamFrame(plan, pace.next() + i);
        }
        if (!sendAll(sockets[turn % sockets.size()], frames)) {
            break;
        }
        pace.take(block);
    }
    return pace.sent();
}

}  // namespace

std::string messageText(const Plan &plan, std::uint64_t number) {
    std::array<char, 64> begin{};
    const int length =
        std::snprintf(begin.data(), begin.size(), "quorbel-load[%lu]: %010lu ", plan.run, number);
    std::string text(begin.data(), static_cast<std::size_t>(length));
    // What surrounds the text in syslogMessage() takes 31 bytes with a priority of three digits.
    constexpr std::size_t kAround = 31;
    constexpr std::string_view kWords = "interface ge-0/0/1 changed state to up, cost 10; ";
    while (text.size() + kAround < plan.length) {
        text += kWords.substr(0, plan.length - kAround - text.size());
    }
    text += kMessageEnd;
    return text;
}

std::string syslogMessage(const Plan &plan, std::uint64_t number) {
    return '<' + std::to_string(plan.priorities[number % plan.priorities.size()]) +
           ">Nov 21 08:00:00 sender1 " + messageText(plan, number);
}

std::string streamFrame(const Plan &plan, std::uint64_t number) {
    std::string message = syslogMessage(plan, number);
    if (plan.counted) {
        return std::to_string(message.size()) + ' ' + message;
    }
    message += '\n';
    return message;
}

Sent send(const Plan &plan, const std::atomic<bool> *stop) {
    return plan.transport == Plan::Transport::kUdp ? sendDatagrams(plan, stop)
                                                   : sendStreams(plan, stop);
}

}  // namespace quorbel::load
