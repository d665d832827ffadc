#pragma once

#include <cstdint>
#include <string_view>

namespace quorbel {

/// Where syslog is received over UDP (RFC 5426) and TCP.
inline constexpr std::uint16_t kSyslogPort = 514;

/// The message that shows whether events are received: Local7.Debug (RFC 3164, section 4.1.1).
inline constexpr std::string_view kTestMessage = "<191>Quorbel - Test message";

}  // namespace quorbel
