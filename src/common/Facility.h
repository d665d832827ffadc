#pragma once

#include <array>
#include <string_view>

namespace quorbel {

/// The facilities as they stand in front of the severity in a Priority, in the order of their
/// numbers (RFC 5424, 6.2.1). None of them holds a severity's name, by which a whole Priority is
/// classified.
inline constexpr std::array<std::string_view, 24> kFacilityNames{
    "Kern",   "User",   "Mail",     "Daemon", "Auth",   "Syslog", "Lpr",     "News",
    "Uucp",   "Cron",   "Authpriv", "Ftp",    "Ntp",    "Audit",  "Console", "Clock",
    "Local0", "Local1", "Local2",   "Local3", "Local4", "Local5", "Local6",  "Local7",
};
inline constexpr unsigned kFacilityCount = kFacilityNames.size();

}  // namespace quorbel
