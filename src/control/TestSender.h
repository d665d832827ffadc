#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// How a test message travels.
enum class TestProtocol { kUdp, kTcp };

std::optional<TestProtocol> testProtocolNamed(std::string_view name);

/// Sends the window's test message to a host (a name or an address) and port: as a datagram, or as
/// a counted frame (RFC 6587) over a connection of its own. Returns what is wrong, empty for
/// nothing as far as anybody tells: that a datagram arrives, nobody does.
std::string sendTest(const std::string &host, std::uint16_t port, TestProtocol protocol);

}  // namespace quorbel
