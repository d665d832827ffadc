#include "service/input/ListenSockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>

namespace quorbel {

namespace {

// What arrives while the service is busy elsewhere waits here. The kernel grants what an
// unprivileged process may have.
constexpr int kReceiveBuffer = 32 * 1024 * 1024;

UniqueFd openSocket(int family, int type) {
    UniqueFd fd(::socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const auto set = [&fd](int level, int option, int value) {
        return ::setsockopt(fd.get(), level, option, &value, sizeof value) == 0;
    };
    if (family == AF_INET6) {
        set(IPPROTO_IPV6, IPV6_V6ONLY, 0);
    }
    if (type == SOCK_STREAM) {
        set(SOL_SOCKET, SO_REUSEADDR, 1);
    } else if (!set(SOL_SOCKET, SO_RCVBUFFORCE, kReceiveBuffer)) {
        set(SOL_SOCKET, SO_RCVBUF, kReceiveBuffer);
    }
    return fd;
}

bool bindTo(const UniqueFd &fd, int family, std::uint16_t port) {
    sockaddr_storage address{};
    socklen_t length = 0;
    if (family == AF_INET6) {
        sockaddr_in6 any{};
        any.sin6_family = AF_INET6;
        any.sin6_port = htons(port);
        length = sizeof any;
        std::memcpy(&address, &any, length);
    } else {
        sockaddr_in any{};
        any.sin_family = AF_INET;
        any.sin_port = htons(port);
        length = sizeof any;
        std::memcpy(&address, &any, length);
    }
    // The interface of sockets casts one address type to another.
    return ::bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), length) == 0;
}

std::uint16_t boundPort(const UniqueFd &fd) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    ::getsockname(fd.get(), reinterpret_cast<sockaddr *>(&address), &length);
    // The port stands at the same place for both families.
    sockaddr_in bound{};
    std::memcpy(&bound, &address, sizeof bound);
    return ntohs(bound.sin_port);
}

/// Nothing, with errno, when the port is taken or the family is not there.
std::optional<ListenSockets> tryToOpen(int family, std::uint16_t port) {
    ListenSockets sockets;
    sockets.tcp = openSocket(family, SOCK_STREAM);
    if (!sockets.tcp.isOpen() || !bindTo(sockets.tcp, family, port)) {
        return std::nullopt;
    }
    sockets.port = boundPort(sockets.tcp);
    sockets.udp = openSocket(family, SOCK_DGRAM);
    if (!sockets.udp.isOpen() || !bindTo(sockets.udp, family, sockets.port) ||
        ::listen(sockets.tcp.get(), SOMAXCONN) != 0) {
        return std::nullopt;
    }
    return sockets;
}

bool isFamilyMissing(int error) {
    return error == EAFNOSUPPORT || error == EADDRNOTAVAIL || error == EPROTONOSUPPORT;
}

}  // namespace

std::variant<ListenSockets, std::string> openListenSockets(std::uint16_t port) {
    // A port that is free for TCP may be taken for UDP; the next try gets another one.
    const int tries = port == 0 ? 20 : 1;
    for (int i = 0; i < tries; ++i) {
        auto sockets = tryToOpen(AF_INET6, port);
        if (!sockets && isFamilyMissing(errno)) {
            sockets = tryToOpen(AF_INET, port);
        }
        if (sockets) {
            return std::move(*sockets);
        }
    }
    return "Port " + std::to_string(port) +
           " cannot be opened: " + std::generic_category().message(errno);
}

}  // namespace quorbel
