#pragma once

#include <cstdint>
#include <string_view>

namespace quorbel {

/// How much a line matters, by the numbers of syslog(3).
enum class JournalLevel { kError = 3, kWarning = 4, kNotice = 5, kInformation = 6 };

/// Writes one line to the standard error stream, with the prefix "<N>" by which the journal knows
/// the level; a very long one as several. Lines of several threads do not mix.
///
/// Never waits: while nobody reads the stream, and what it can hold is full, lines are dropped. The
/// next one that gets through is told how many, in a line in front of it. Any thread.
void say(JournalLevel level, std::string_view text);

/// How many lines were dropped since the start. Any thread.
std::uint64_t journalLinesDropped();

}  // namespace quorbel
