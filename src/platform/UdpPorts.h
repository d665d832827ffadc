#pragma once

#include <cstdint>
#include <string_view>

namespace quorbel {

/// Whether some program receives what is sent over UDP to 127.0.0.1 at that port.
bool isUdpPortServed(std::uint16_t port);

/// The same by the text of the kernel's table of sockets, /proc/net/udp or udp6.
bool isUdpPortServed(std::string_view table, std::uint16_t port);

}  // namespace quorbel
