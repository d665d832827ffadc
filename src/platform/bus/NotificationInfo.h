#pragma once

#include "platform/bus/SdBus.h"

#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// Keys and values of one notification's user information, in the order sent. Entries that are
/// no strings are left out. A text with a noncharacter, such as U+FFFE, is handed over as
/// U+FFFD, and the entries behind it are missing. The views live as long as the call.
using NotificationInfo = std::vector<std::pair<std::string_view, std::string_view>>;

namespace bus {

/// Fills `info` from an a{ss}, or from the texts of an a{sv}, as far as sd-bus reads them; false
/// when the message holds neither.
bool readNotificationInfo(sd_bus_message *message, NotificationInfo &info);

}  // namespace bus

}  // namespace quorbel
