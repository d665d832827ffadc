#include "control/TestSender.h"

#include "common/SyslogTest.h"
#include "platform/UniqueFd.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace quorbel {

namespace {

struct FreeAddresses {
    void operator()(addrinfo *first) const { ::freeaddrinfo(first); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

std::string messageOf(int error) {
    return std::generic_category().message(error);
}

/// As the protocol frames it.
std::string bytesFor(TestProtocol protocol) {
    const std::string message(kTestMessage);
    return protocol == TestProtocol::kUdp ? message
                                          : std::to_string(message.size()) + ' ' + message;
}

/// A datagram that nobody receives on a machine is told of by that machine, at once when it is this
/// one.
int errorOf(int socket) {
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

/// Gives errno, 0 for nothing wrong.
int sendTo(const addrinfo &address, const std::string &bytes) {
    const UniqueFd socket(
        ::socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol));
    // Connecting and sending, each.
    constexpr timeval kPatience{10, 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
    if (!socket.isOpen() || ::connect(socket.get(), address.ai_addr, address.ai_addrlen) != 0) {
        return errno == EINPROGRESS ? ETIMEDOUT : errno;
    }
    if (::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(bytes.size())) {
        return errno;
    }
    ::shutdown(socket.get(), SHUT_WR);
    return errorOf(socket.get());
}

}  // namespace

std::optional<TestProtocol> testProtocolNamed(std::string_view name) {
    return name == "udp"   ? std::optional(TestProtocol::kUdp)
           : name == "tcp" ? std::optional(TestProtocol::kTcp)
                           : std::nullopt;
}

std::string sendTest(const std::string &host, std::uint16_t port, TestProtocol protocol) {
    addrinfo hints{};
    hints.ai_socktype = protocol == TestProtocol::kUdp ? SOCK_DGRAM : SOCK_STREAM;
    addrinfo *first = nullptr;
    const int result = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &first);
    const Addresses addresses(first);
    if (result != 0) {
        return result == EAI_SYSTEM ? messageOf(errno) : ::gai_strerror(result);
    }
    int error = 0;
    for (const addrinfo *one = first; one != nullptr; one = one->ai_next) {
        error = sendTo(*one, bytesFor(protocol));
        if (error == 0) {
            return "";
        }
    }
    return messageOf(error);
}

}  // namespace quorbel
