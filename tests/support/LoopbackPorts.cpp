#include "support/LoopbackPorts.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <random>
#include <stdexcept>

namespace quorbel::testing {

namespace {

sockaddr_in addressOf(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

UniqueFd bound(std::uint16_t port) {
    UniqueFd listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int yes = 1;
    setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const sockaddr_in address = addressOf(port);
    const bool isFree =
        bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        listen(listener.get(), SOMAXCONN) == 0;
    return isFree ? std::move(listener) : UniqueFd();
}

}  // namespace

std::uint16_t freePort() {
    constexpr int kTries = 1000;
    static std::mt19937 random{std::random_device{}()};
    std::uniform_int_distribution<int> any(10'000, 32'000);  // below those for anybody
    for (int i = 0; i < kTries; ++i) {
        const auto port = static_cast<std::uint16_t>(any(random));
        if (bound(port).isOpen()) {
            return port;
        }
    }
    throw std::runtime_error("There is no free port");
}

UniqueFd listenOn(std::uint16_t port) {
    UniqueFd listener = bound(port);
    if (!listener.isOpen()) {
        throw std::runtime_error("Cannot listen on port " + std::to_string(port));
    }
    return listener;
}

std::uint16_t portOf(const UniqueFd &listener) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(listener.get(), reinterpret_cast<sockaddr *>(&address), &size);
    return ntohs(address.sin_port);
}

UniqueFd connectTo(std::uint16_t port) {
    UniqueFd connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = addressOf(port);
    return connect(connection.get(), reinterpret_cast<const sockaddr *>(&address),
                   sizeof address) == 0
               ? std::move(connection)
               : UniqueFd();
}

}  // namespace quorbel::testing
