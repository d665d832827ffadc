#pragma once

#include <cstddef>
#include <string>

namespace quorbel {
class EventList;
}

namespace quorbel::soak {

/// How the window's list differs from the log files of the library folder.
struct Comparison {
    std::size_t logged = 0;   ///< lines of the log files
    std::size_t missing = 0;  ///< of these are not listed
    std::size_t tooMany = 0;  ///< are listed, and stand in no log file
    std::string example{};    ///< one of those, as a line

    [[nodiscard]] bool isEqual() const { return missing + tooMany == 0; }
};

/// Event for event, with time, priority, host and message. Whatever changes meanwhile differs.
Comparison compare(EventList &list);

}  // namespace quorbel::soak
