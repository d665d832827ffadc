#pragma once

#include "platform/FilePlace.h"
#include "platform/bus/SdBus.h"

#include <cstdint>

namespace quorbel {

/// What the service has told so far, and where that is in the log files.
struct Checkpoint {
    std::uint64_t epoch = 0;    ///< one run of the service
    std::uint64_t sets = 0;     ///< new events told in it, those that were dropped included
    std::uint64_t removes = 0;  ///< the same of removed ones
    /// How often it has replaced a log file, or as it was before removals began that are not told
    /// to their end.
    std::uint64_t edits = 0;
    /// Behind the last stored one of `sets`: those before it are stored up to here, and nothing
    /// that is later.
    FilePlace place;

    bool operator==(const Checkpoint &) const = default;
};

namespace bus {

// A checkpoint in a message: its numbers, and the place.
inline constexpr const char *kCheckpointType = "(tttt(sttt))";

/// Both as sd-bus does: negative when it fails.
int appendCheckpoint(sd_bus_message *message, const Checkpoint &checkpoint);
int readCheckpoint(sd_bus_message *message, Checkpoint &checkpoint);

}  // namespace bus

}  // namespace quorbel
