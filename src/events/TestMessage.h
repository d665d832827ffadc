#pragma once

#include <cstdint>

namespace quorbel {

/// Where syslog is received over UDP (RFC 5426).
inline constexpr std::uint16_t kSyslogPort = 514;

/// Sends one syslog message to this machine, whether or not anything receives it, and reports
/// nothing. The socket stays open until the program ends.
void sendTestMessage(std::uint16_t port = kSyslogPort);

}  // namespace quorbel
