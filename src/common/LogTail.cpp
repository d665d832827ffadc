#include "common/LogTail.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>

namespace quorbel {

namespace {

constexpr std::size_t kPart = std::size_t{1} << 20U;

/// What can be read of the bytes from `offset` on, `length` at most.
std::string bytesAt(int fd, std::uint64_t offset, std::size_t length) {
    std::string bytes(length, '\0');
    std::size_t count = 0;
    while (count < length) {
        const ssize_t got =
            ::pread(fd, bytes.data() + count, length - count, static_cast<off_t>(offset + count));
        if (got <= 0 && !(got < 0 && errno == EINTR)) {
            break;
        }
        count += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    }
    bytes.resize(count);
    return bytes;
}

/// The offset behind the last line feed in front of `end`, at `least` or later; nothing when there
/// is none.
std::optional<std::uint64_t> lineEndBefore(int fd, std::uint64_t end, std::uint64_t least) {
    constexpr std::uint64_t kStep = 4096;
    while (end > least) {
        const std::uint64_t begin = end - std::min(end - least, kStep);
        const std::string bytes = bytesAt(fd, begin, static_cast<std::size_t>(end - begin));
        const std::size_t at = bytes.rfind('\n');
        if (at != std::string::npos) {
            return begin + at + 1;
        }
        end = begin;
    }
    return std::nullopt;
}

}  // namespace

std::uint64_t wholeLinesEnd(int fd, std::uint64_t size) {
    return lineEndBefore(fd, size, 0).value_or(0);
}

std::uint64_t readLines(int fd, std::uint64_t begin, std::uint64_t end,
                        const LogReader::LineHandler &onLine) {
    while (begin < end) {
        const std::string bytes = bytesAt(
            fd, begin, static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, kPart)));
        std::string_view rest = bytes;
        while (const std::size_t length = logPieceLength(rest, false)) {
            const auto line = splitLogLine(rest.substr(0, length));
            rest.remove_prefix(length);
            begin += length;
            if (line && !onLine(*line)) {
                return begin;
            }
        }
        if (rest.size() == bytes.size()) {
            break;
        }
    }
    return begin;
}

std::uint64_t partBefore(int fd, std::uint64_t end) {
    // A line of any length is one part's: a piece of it depends on where it begins.
    return end <= kPart ? 0 : lineEndBefore(fd, end - kPart, 0).value_or(0);
}

}  // namespace quorbel
