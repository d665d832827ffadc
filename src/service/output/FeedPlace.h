#pragma once

#include "platform/FilePlace.h"
#include "platform/UniqueFd.h"
#include "service/store/LogFollower.h"

#include <cstdint>
#include <string_view>

namespace quorbel {

/// How far a feed is in a log file: behind its first `offset` bytes, at the begin of a line unless
/// that is longer than any of ours.
///
/// Where there is a place, even at 0, all in front of it is done with; where there is none for a
/// file, nothing of it is.
struct FeedPlace {
    FileMark file;  ///< all 0: there is no file any more, its lines were taken out
    std::uint64_t offset = 0;
    std::uint64_t tail = 0;  ///< a hash of the last bytes in front of it; 0: not known
    std::uint64_t head = 0;  ///< a hash of the file's first line; 0: not known
    /// Of the lines that were taken out behind the place before they were sent, since it was
    /// reached, the earliest one: a hash, 0 for none, and its time. It tells what belongs in front
    /// and what behind when lines are put in just there.
    std::uint64_t cutLine = 0;
    std::int64_t cutSeconds = 0;

    bool operator==(const FeedPlace &) const = default;
};

/// A hash that files of ours hold, so that it stays the same; never 0.
std::uint64_t feedHash(std::string_view bytes);

/// A place in an open file, with what tells that file from others.
FeedPlace placeAt(const UniqueFd &file, std::uint64_t offset);

enum class PlaceState {
    kFits,      ///< the place is good, or is now
    kAtEnd,     ///< the file is shorter than it was; the place is behind its last line now
    kElsewhere  ///< it is another file: nothing of it was sent
};
/// Finds the place again in the file that stands under its name now.
PlaceState findAgain(FeedPlace &place, const UniqueFd &file);

/// Moves the place as an edit moves what stands there. What tells the new file from others is not
/// known to it then.
void movePlace(FeedPlace &place, const LogEdit &edit);

/// How many lines an edit takes out behind `offset`.
std::uint64_t linesRemovedBehind(std::uint64_t offset, const LogEdit &edit);

/// The seconds with which a line begins; 0 when it does not.
std::int64_t secondsOf(std::string_view line);

/// What can be read of a file from `offset` on, `length` bytes at most.
std::string bytesOf(const UniqueFd &file, std::uint64_t offset, std::size_t length);

}  // namespace quorbel
