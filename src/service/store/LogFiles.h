#pragma once

#include "platform/UniqueFd.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

// What the log store does to one file at a time. None of these locks anything; failures leave
// errno behind.

/// A part of a file.
struct ByteRange {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// Text for a file, in front of its byte at `offset`; its size is behind all.
struct Insertion {
    std::uint64_t offset = 0;
    std::string text;
};

/// The log file for events received at that moment: "2026-11-21.log", by the local calendar.
std::string logFileName(std::int64_t seconds);

/// What was found at the end of a log file.
enum class TailState {
    kWhole,      ///< the file is empty or ends in a line feed
    kCompleted,  ///< the last line was whole but for its line end, or its message was cut short
    kCutOff,     ///< a piece of a line that no reader would take for an event was removed
    kFailed
};

/// Makes a file that is open for reading and appending end in a whole line, so that what is
/// appended next begins a line of its own.
///
/// A last line without its end is one whose writing was interrupted. When all four fields are
/// there, it is ended where its last whole character ends: an event that was received is not
/// thrown away because its last words are missing. Otherwise it is cut off.
TailState repairTail(int fd);

/// Makes the folder of the log files if it is not there; false with errno.
bool makeLogFolder(const std::filesystem::path &folder);

/// Opens a log file for reading; it is not open when it is no regular file.
UniqueFd openLogFile(const std::filesystem::path &path);
/// The same for reading and appending, with further flags of open(2). Neither waits, whatever
/// stands under that name. Whoever may enter the folder may read the file, unless anybody may.
UniqueFd openForAppending(const std::filesystem::path &path, int flags);

/// What to take out of a log file with a piece of it. Behind the first piece of an over-long line,
/// its line end stays: without it, the piece before would be joined to the next line.
ByteRange removableRange(std::uint64_t offset, std::string_view piece, bool atLineBegin);

/// Appends a whole file's part to another file, but for `without` (ascending, disjoint).
bool copyPart(int from, ByteRange part, const std::vector<ByteRange> &without, int to);
/// The same with those of `insertions` (ascending) from `next` on, up to the part's end; `next`
/// becomes the first behind it.
bool copyPartWith(int from, ByteRange part, const std::vector<Insertion> &insertions,
                  std::size_t &next, int to);

/// What tells a file from every other one, while it is open at least.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(const FileIdentity &) const = default;
};
/// Nothing, with errno, when it is not open, or not there.
std::optional<FileIdentity> identityOf(const UniqueFd &file);
std::optional<FileIdentity> identityOf(const std::filesystem::path &path);
/// Whether `path` still names the open file.
bool isSameFile(const UniqueFd &file, const std::filesystem::path &path);
/// Under which name a file is made that is to replace `file`: not that of a log file, so that
/// readers leave it alone.
std::string replacementName(const std::filesystem::path &file);

/// Whether so many bytes can be written to the file system of an open file, with some room left for
/// events that arrive meanwhile. False with ENOSPC.
bool hasRoomFor(int fd, std::uint64_t bytes);

/// Returns whether to go on.
using PieceHandler = std::function<bool(std::uint64_t offset, std::string_view piece)>;
/// Reads a part of the file that begins with a line and calls `onPiece` with each piece as readers
/// of the log files take them, and its offset, until it wants no more. False when the file cannot
/// be read.
bool forEachPiece(int fd, ByteRange part, const PieceHandler &onPiece);
/// The same for the file's first `length` bytes.
inline bool forEachPiece(int fd, std::uint64_t length, const PieceHandler &onPiece) {
    return forEachPiece(fd, ByteRange{0, length}, onPiece);
}

}  // namespace quorbel
