#pragma once

#include "common/SyslogTest.h"

#include <cstdint>

namespace quorbel {

/// Sends one syslog message to this machine, whether or not anything receives it, and reports
/// nothing. The socket stays open until the program ends.
void sendTestMessage(std::uint16_t port = kSyslogPort);

}  // namespace quorbel
