#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {
class EventList;
}

namespace quorbel::soak {

/// Seconds since 1970, both of them in it.
struct TimeSpan {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// How the window's list differs from the log files of the library folder.
struct Comparison {
    std::size_t logged = 0;    ///< lines of the log files
    std::size_t missing = 0;   ///< of these are not listed
    std::size_t tooMany = 0;   ///< are listed, and stand in no log file
    std::size_t unstored = 0;  ///< the same, but are of a time when nothing could be stored
    std::string example{};     ///< one that is missing or too many, as a line

    [[nodiscard]] bool isEqual() const { return missing + tooMany == 0; }
};

/// Event for event, with time, priority, host and message. Whatever changes meanwhile differs.
/// `unstored`: when events could not be stored.
Comparison compare(EventList &list, const std::vector<TimeSpan> &unstored);

}  // namespace quorbel::soak
