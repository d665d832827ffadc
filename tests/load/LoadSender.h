#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel::load {

/// Numbered messages to a port of this machine: what was sent can be told from what arrived, one
/// by one.
struct Plan {
    enum class Transport { kUdp, kTcp };

    std::uint16_t port = 0;
    Transport transport = Transport::kUdp;
    std::uint64_t run = 1;    ///< tells the messages of several plans apart
    std::uint64_t first = 0;  ///< the number of the first message
    std::uint64_t count = 0;
    std::uint64_t perSecond = 0;             ///< 0: as fast as possible
    std::size_t length = 100;                ///< bytes of a message, at least as many as it needs
    std::vector<unsigned> priorities{134U};  ///< message n gets the one at n modulo their count
    std::size_t connections = 1;             ///< TCP: they take turns, block by block
    bool counted = false;                    ///< TCP: octet counting instead of line ends
    std::size_t perCall = 64;                ///< so many messages are sent at once, at most 64
    /// UDP: what is sent at once as fast as possible is cut into datagrams by the kernel, where it
    /// can do that, which is far cheaper than sending each.
    bool cutByKernel = true;
    /// UDP: wait while more than so many bytes lie in the receiving socket, so that nothing is
    /// dropped; 0: never wait.
    std::uint64_t mostQueued = 0;
};

/// What every message ends in, and holds nowhere else: a cut one is told by it.
inline constexpr char kMessageEnd = '.';

/// The text of a message as it is to stand in the log files.
std::string messageText(const Plan &plan, std::uint64_t number);
/// The message as it is sent: priority, time stamp and host name of RFC 3164 in front of the text.
std::string syslogMessage(const Plan &plan, std::uint64_t number);
/// A message as a frame of a stream.
std::string streamFrame(const Plan &plan, std::uint64_t number);

struct Sent {
    std::uint64_t count = 0;  ///< messages that the kernel took whole
    double seconds = 0;
};

/// Sends until the plan is done, a TCP connection breaks or `stop` is set.
Sent send(const Plan &plan, const std::atomic<bool> *stop = nullptr);

}  // namespace quorbel::load
