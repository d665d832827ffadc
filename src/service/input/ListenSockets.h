#pragma once

#include "platform/UniqueFd.h"

#include <cstdint>
#include <string>
#include <variant>

namespace quorbel {

/// The sockets that messages come in through. Both take IPv4 and IPv6, or IPv4 alone where there
/// is no IPv6.
struct ListenSockets {
    UniqueFd udp;
    UniqueFd tcp;
    std::uint16_t port = 0;  ///< the one that both are bound to
};

/// Opens them on all addresses, without blocking mode; port 0 takes any that is free for both.
/// Gives one line that says what is wrong when that is not possible.
std::variant<ListenSockets, std::string> openListenSockets(std::uint16_t port);

/// The same, for streams alone.
struct StreamListener {
    UniqueFd socket;
    std::uint16_t port = 0;
};
std::variant<StreamListener, std::string> openStreamListener(std::uint16_t port);
/// The same, or `listener`, if that is one on this port already.
std::variant<StreamListener, std::string> useOrOpenListener(UniqueFd listener, std::uint16_t port);

/// The port that a socket is bound to.
std::uint16_t boundPort(const UniqueFd &socket);

}  // namespace quorbel
