#include "service/input/ListenSockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

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

// These give nothing, with errno, when the port is taken or the family is not there.

std::optional<StreamListener> tryToListen(int family, std::uint16_t port) {
    StreamListener listener{openSocket(family, SOCK_STREAM)};
    if (!listener.socket.isOpen() || !bindTo(listener.socket, family, port) ||
        ::listen(listener.socket.get(), SOMAXCONN) != 0) {
        return std::nullopt;
    }
    listener.port = boundPort(listener.socket);
    return listener;
}

std::optional<ListenSockets> tryToOpen(int family, std::uint16_t port) {
    auto listener = tryToListen(family, port);
    if (!listener) {
        return std::nullopt;
    }
    ListenSockets sockets{openSocket(family, SOCK_DGRAM), std::move(listener->socket),
                          listener->port};
    if (!sockets.udp.isOpen() || !bindTo(sockets.udp, family, sockets.port)) {
        return std::nullopt;
    }
    return sockets;
}

bool isFamilyMissing(int error) {
    return error == EAFNOSUPPORT || error == EADDRNOTAVAIL || error == EPROTONOSUPPORT;
}

/// What `tryToOpenFor` gives for both families, or else for IPv4 alone.
template <typename Opened>
std::variant<Opened, std::string> openFor(std::uint16_t port, int tries,
                                          std::optional<Opened> (*tryToOpenFor)(int family,
                                                                                std::uint16_t)) {
    for (int i = 0; i < tries; ++i) {
        auto opened = tryToOpenFor(AF_INET6, port);
        if (!opened && isFamilyMissing(errno)) {
            opened = tryToOpenFor(AF_INET, port);
        }
        if (opened) {
            return std::move(*opened);
        }
    }
    return "Port " + std::to_string(port) +
           " cannot be opened: " + std::generic_category().message(errno);
}

}  // namespace

std::variant<ListenSockets, std::string> openListenSockets(std::uint16_t port) {
    // A port that is free for TCP may be taken for UDP; the next try gets another one.
    return openFor(port, port == 0 ? 20 : 1, tryToOpen);
}

std::variant<StreamListener, std::string> openStreamListener(std::uint16_t port) {
    return openFor(port, 1, tryToListen);
}

std::variant<StreamListener, std::string> useOrOpenListener(UniqueFd listener, std::uint16_t port) {
    const std::uint16_t bound = listener.isOpen() ? boundPort(listener) : 0;
    if (bound != 0 && (port == 0 || port == bound)) {
        return StreamListener{std::move(listener), bound};
    }
    listener.reset();
    return openStreamListener(port);
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

}  // namespace quorbel
