#pragma once

#include <string_view>

namespace quorbel {

/// How much a line matters, by the numbers of syslog(3).
enum class JournalLevel { kError = 3, kWarning = 4, kNotice = 5, kInformation = 6 };

/// Writes one line to the standard error stream, with the prefix "<N>" by which the journal knows
/// the level. Lines of several threads do not mix.
void say(JournalLevel level, std::string_view text);

}  // namespace quorbel
