#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// How far one output has come: what it hands on, and what waits. A plain value.
struct OutputState {
    std::string name;                 ///< its section's, in the service's configuration
    std::string_view kind;            ///< "syslog", "cluster"; lives as long as the program
    std::uint64_t sent = 0;           ///< events that reached the receiver, since it was started
    std::uint64_t removedUnsent = 0;  ///< events that went out of the log files before, since it
                                      ///< was made; also those that its filter does not mean
    std::uint64_t lagEvents = 0;      ///< events in the log files that have yet to reach it
    std::int64_t lagSeconds = 0;      ///< how old the oldest of these is; 0 when there is none
    double rate = 0;                  ///< events a second that reached it, over the last minute
    std::string problem;              ///< the last one, one line as legible() shows it; or empty
    std::int64_t problemSeconds = 0;  ///< since 1970, of the last one; 0 for never

    bool operator==(const OutputState &) const = default;
};

/// What became of events, of all outputs since the service's start.
struct OutputTotals {
    std::uint64_t sent = 0;
    std::uint64_t removedUnsent = 0;

    OutputTotals &operator+=(const OutputTotals &other) {
        sent += other.sent;
        removedUnsent += other.removedUnsent;
        return *this;
    }
};

}  // namespace quorbel
