#pragma once

#include "common/LogReader.h"
#include "platform/UniqueFd.h"

#include <cstdint>
#include <functional>
#include <string>

namespace quorbel {

/// Reads parts of log files, and their ends first. All offsets are those of whole lines: behind a
/// line feed, or 0.

/// Where the last whole line of an open file's first `size` bytes ends.
std::uint64_t wholeLinesEnd(int fd, std::uint64_t size);

/// Hands on the lines between two offsets. Stops at what is no whole line when `end` is the file's
/// end; returns where it stopped.
std::uint64_t readLines(int fd, std::uint64_t begin, std::uint64_t end,
                        const LogReader::LineHandler &onLine);

/// Where to begin to read some megabyte in front of `end`; 0 when there is less.
std::uint64_t partBefore(int fd, std::uint64_t end);

}  // namespace quorbel
