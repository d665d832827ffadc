#include "service/output/FeedPlace.h"

#include "common/LogReader.h"
#include "common/LogTail.h"
#include "platform/Number.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint64_t kTail = 4096;
/// In place of a hash: which of several lines of a second was the first is not known.
constexpr std::uint64_t kAnyLine = 1;

std::uint64_t sizeOf(const UniqueFd &file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::uint64_t tailHash(const UniqueFd &file, std::uint64_t offset) {
    const std::uint64_t length = std::min(offset, kTail);
    return feedHash(bytesOf(file, offset - length, length));
}

std::string_view firstLine(std::string_view bytes) {
    return bytes.substr(0, std::min(bytes.find('\n'), bytes.size()));
}

std::uint64_t headHash(const UniqueFd &file) {
    return feedHash(firstLine(bytesOf(file, 0, kLogPieceSize)));
}

/// Of the text put in just at a place, how much belongs in front of it.
std::size_t lengthInFront(const FeedPlace &place, std::string_view text) {
    if (place.cutLine == 0) {
        return text.size();
    }
    std::size_t later = text.size();
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view line = firstLine(text.substr(at));
        if (feedHash(line) == place.cutLine) {
            return at;
        }
        if (later == text.size() && secondsOf(line) >= place.cutSeconds) {
            later = at;
        }
        at += line.size() + 1;
    }
    return later;
}

void moveBehindInsertions(FeedPlace &place, std::span<const Insertion> insertions) {
    const std::uint64_t offset = place.offset;
    for (const Insertion &insertion : insertions) {
        if (insertion.offset < offset) {
            place.offset += insertion.text.size();
        } else if (insertion.offset == offset) {
            place.offset += lengthInFront(place, insertion.text);
        }
    }
}

/// The lines put in later stand by their time, so that the earliest one is the first.
void noteCut(FeedPlace &place, std::string_view line) {
    const std::int64_t seconds = secondsOf(line);
    const std::uint64_t hash = feedHash(firstLine(line));
    if (place.cutLine == 0 || seconds < place.cutSeconds) {
        place.cutLine = hash;
        place.cutSeconds = seconds;
    } else if (seconds == place.cutSeconds && hash != place.cutLine) {
        place.cutLine = kAnyLine;
    }
}

void moveBehindRemovals(FeedPlace &place, const LogEdit &edit) {
    const std::uint64_t offset = place.offset;
    bool isNoted = false;
    for (const ByteRange &range : edit.change.removed) {
        const std::uint64_t end = std::min(range.end, offset);
        if (range.begin < end) {
            place.offset -= end - range.begin;
        }
        if (range.end > offset && !std::exchange(isNoted, true)) {
            noteCut(place, bytesOf(edit.file, std::max(range.begin, offset), kLogPieceSize));
        }
    }
}

}  // namespace

std::uint64_t feedHash(std::string_view bytes) {
    // FNV-1a.
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : bytes) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    return std::max<std::uint64_t>(hash, 1);
}

FeedPlace placeAt(const UniqueFd &file, std::uint64_t offset) {
    return {markOf(file.get()).value_or(FileMark{}), offset, tailHash(file, offset),
            headHash(file)};
}

PlaceState findAgain(FeedPlace &place, const UniqueFd &file) {
    const FileMark mark = markOf(file.get()).value_or(FileMark{});
    if (place.file == FileMark{}) {
        return PlaceState::kFits;
    }
    const std::uint64_t size = sizeOf(file);
    if (size == 0) {
        // The one that stood there is gone; what it gets back was in front of the place.
        place.file = mark;
        place.offset = 0;
        place.tail = feedHash("");
        place.head = 0;
        return PlaceState::kFits;
    }
    const bool isSame = place.file == mark;
    if (size >= place.offset &&
        (place.tail == 0 ? isSame : place.tail == tailHash(file, place.offset))) {
        place.file = mark;
        return PlaceState::kFits;
    }
    // Only its end went, as when the machine stopped before it was on disk: the rest was sent.
    if (isSame && size < place.offset && (place.head == 0 || place.head == headHash(file))) {
        place = placeAt(file, wholeLinesEnd(file.get(), size));
        return PlaceState::kAtEnd;
    }
    return PlaceState::kElsewhere;
}

void movePlace(FeedPlace &place, const LogEdit &edit) {
    edit.change.removed.empty() ? moveBehindInsertions(place, edit.change.inserted)
                                : moveBehindRemovals(place, edit);
    place.file = edit.replacement == nullptr ? FileMark{}
                                             : markOf(edit.replacement->get()).value_or(FileMark{});
    place.tail = 0;
    place.head = 0;
}

std::uint64_t linesRemovedBehind(std::uint64_t offset, const LogEdit &edit) {
    constexpr std::size_t kPart = std::size_t{1} << 20U;
    std::uint64_t lines = 0;
    std::string part;
    std::uint64_t partBegin = 0;
    for (const ByteRange &range : edit.change.removed) {
        for (std::uint64_t at = std::max(range.begin, offset); at < range.end;) {
            if (at < partBegin || at >= partBegin + part.size()) {
                part = bytesOf(edit.file, at, kPart);
                partBegin = at;
            }
            if (part.empty()) {
                return lines;
            }
            const std::uint64_t end = std::min(range.end, partBegin + part.size());
            lines += static_cast<std::uint64_t>(
                std::count(part.begin() + static_cast<std::ptrdiff_t>(at - partBegin),
                           part.begin() + static_cast<std::ptrdiff_t>(end - partBegin), '\n'));
            at = end;
        }
    }
    return lines;
}

std::int64_t secondsOf(std::string_view line) {
    return readNumber<std::int64_t>(line.substr(0, line.find(','))).value_or(0);
}

std::string bytesOf(const UniqueFd &file, std::uint64_t offset, std::size_t length) {
    std::string bytes(length, '\0');
    std::size_t held = 0;
    while (held < length) {
        const ssize_t count = ::pread(file.get(), bytes.data() + held, length - held,
                                      static_cast<off_t>(offset + held));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        held += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    bytes.resize(held);
    return bytes;
}

}  // namespace quorbel
