#include "service/store/LogFiles.h"

#include "common/LogReader.h"
#include "platform/DescriptorIo.h"
#include "platform/Text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>
#include <system_error>

namespace quorbel {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20U;

/// Reads until `room` bytes are there or the file ends; -1 on failure.
ssize_t readAt(int fd, char *buffer, std::size_t room, std::uint64_t offset) {
    std::size_t held = 0;
    while (held < room) {
        const ssize_t count =
            ::pread(fd, buffer + held, room - held, static_cast<off_t>(offset + held));
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return -1;
        }
        held += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return static_cast<ssize_t>(held);
}

/// Where the last line without an end begins; the file's size when there is none.
std::optional<std::uint64_t> lastLineBegin(int fd, std::uint64_t size) {
    std::array<char, 4096> block{};
    std::uint64_t end = size;
    while (end > 0) {
        const std::uint64_t begin = end - std::min<std::uint64_t>(end, block.size());
        if (readAt(fd, block.data(), end - begin, begin) != static_cast<ssize_t>(end - begin)) {
            return std::nullopt;
        }
        const std::size_t feed = std::string_view(block.data(), end - begin).rfind('\n');
        if (feed != std::string_view::npos) {
            return begin + feed + 1;
        }
        end = begin;
    }
    return 0;
}

/// How much of an interrupted line can stay.
std::size_t usableLength(std::string_view line) {
    // After a power failure a file can end in zeros that were never written.
    line = line.substr(0, line.find('\0'));
    line = line.substr(0, line.find('\r'));
    constexpr std::size_t kLongestCharacter = 4;
    for (std::size_t cut = 0; cut < std::min(kLongestCharacter, line.size()); ++cut) {
        const std::string_view usable = line.substr(0, line.size() - cut);
        if (isUtf8(usable)) {
            return splitLogLine(usable) ? usable.size() : 0;
        }
    }
    return 0;
}

/// Takes `ranges` out of a block of the file that begins at `offset`; returns how much is left.
/// `next` is the first range that ends behind the block's begin, and is moved on.
std::size_t takeOut(std::string &block, std::size_t size, std::uint64_t offset,
                    std::vector<ByteRange>::const_iterator &next,
                    std::vector<ByteRange>::const_iterator last) {
    const std::uint64_t blockEnd = offset + size;
    std::size_t kept = 0;
    for (std::uint64_t at = offset; at < blockEnd;) {
        const bool more = next != last && next->begin < blockEnd;
        const std::uint64_t stay = more ? std::max(next->begin, at) : blockEnd;
        std::memmove(block.data() + kept, block.data() + (at - offset), stay - at);
        kept += stay - at;
        at = more ? std::min(next->end, blockEnd) : blockEnd;
        if (more && next->end <= blockEnd) {
            ++next;
        }
    }
    return kept;
}

bool isClosedToOthers(const std::filesystem::path &folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && (status.st_mode & S_IRWXO) == 0;
}

}  // namespace

std::string logFileName(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm local{};
    localtime_r(&time, &local);
    std::array<char, 64> name{};
    const std::size_t length = std::strftime(name.data(), name.size(), "%Y-%m-%d.log", &local);
    return {name.data(), length};
}

TailState repairTail(int fd) {
    struct stat status {};
    if (::fstat(fd, &status) != 0) {
        return TailState::kFailed;
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const auto begin = lastLineBegin(fd, size);
    if (begin == size) {
        return TailState::kWhole;
    }
    std::string line(begin ? std::min<std::uint64_t>(size - *begin, kLogPieceSize) : 0, '\0');
    if (!begin ||
        readAt(fd, line.data(), line.size(), *begin) != static_cast<ssize_t>(line.size())) {
        return TailState::kFailed;
    }
    const std::size_t usable = usableLength(line);
    // A longer line than any of ours, and no zeros: somebody else's, and none of it is in doubt.
    const bool foreign = size - *begin > kLogPieceSize && line.find('\0') == std::string::npos;
    if (!foreign && ::ftruncate(fd, static_cast<off_t>(*begin + usable)) != 0) {
        return TailState::kFailed;
    }
    if (!foreign && usable == 0) {
        return TailState::kCutOff;
    }
    constexpr std::string_view kLineEnd = "\r\n";
    return writeFully(fd, kLineEnd) == kLineEnd.size() ? TailState::kCompleted : TailState::kFailed;
}

bool makeLogFolder(const std::filesystem::path &folder) {
    constexpr mode_t kMode = 0750;
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    return ::mkdir(folder.c_str(), kMode) == 0 || errno == EEXIST;
}

UniqueFd openLogFile(const std::filesystem::path &path) {
    return openRegular(path, O_RDONLY);
}

UniqueFd openForAppending(const std::filesystem::path &path, int flags) {
    constexpr mode_t kMode = 0640;
    UniqueFd file = openRegular(path, O_RDWR | O_APPEND | flags, kMode);
    if (file.isOpen() && isClosedToOthers(path.parent_path())) {
        // Those whom the folder lets in, and nobody else.
        ::fchmod(file.get(), kMode | S_IROTH);
    }
    return file;
}

ByteRange removableRange(std::uint64_t offset, std::string_view piece, bool atLineBegin) {
    if (!atLineBegin) {
        piece = piece.substr(0, piece.find_last_not_of("\r\n") + 1);
    }
    return {offset, offset + piece.size()};
}

bool copyPart(int from, ByteRange part, const std::vector<ByteRange> &without, int to) {
    std::string block(kBlock, '\0');
    auto next = std::ranges::upper_bound(without, part.begin, {}, &ByteRange::end);
    for (std::uint64_t offset = part.begin; offset < part.end;) {
        const std::size_t wanted = std::min<std::uint64_t>(kBlock, part.end - offset);
        const ssize_t count = readAt(from, block.data(), wanted, offset);
        if (count != static_cast<ssize_t>(wanted)) {
            errno = count < 0 ? errno : EIO;
            return false;
        }
        const std::size_t kept = takeOut(block, wanted, offset, next, without.end());
        if (writeFully(to, {block.data(), kept}) != kept) {
            return false;
        }
        offset += wanted;
    }
    return true;
}

bool copyPartWith(int from, ByteRange part, const std::vector<Insertion> &insertions,
                  std::size_t &next, int to) {
    for (; next < insertions.size() && insertions[next].offset <= part.end; ++next) {
        const auto &[offset, text] = insertions[next];
        if (!copyPart(from, {part.begin, offset}, {}, to) || writeFully(to, text) != text.size()) {
            return false;
        }
        part.begin = offset;
    }
    return copyPart(from, part, {}, to);
}

std::optional<FileIdentity> identityOf(const UniqueFd &file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0
               ? std::optional(FileIdentity{status.st_dev, status.st_ino})
               : std::nullopt;
}

std::optional<FileIdentity> identityOf(const std::filesystem::path &path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0
               ? std::optional(FileIdentity{status.st_dev, status.st_ino})
               : std::nullopt;
}

bool isSameFile(const UniqueFd &file, const std::filesystem::path &path) {
    const auto open = identityOf(file);
    return open && open == identityOf(path);
}

std::string replacementName(const std::filesystem::path &file) {
    return file.string() + ".new";
}

bool hasRoomFor(int fd, std::uint64_t bytes) {
    constexpr std::uint64_t kReserve = std::uint64_t{4} << 20U;
    struct statvfs status {};
    // Where that is not known, writing will tell.
    const bool has = ::fstatvfs(fd, &status) != 0 ||
                     bytes / status.f_frsize + kReserve / status.f_frsize < status.f_bavail;
    errno = has ? errno : ENOSPC;
    return has;
}

bool forEachPiece(int fd, ByteRange part, const PieceHandler &onPiece) {
    std::string buffer(std::min<std::uint64_t>(kBlock, part.end - part.begin), '\0');
    std::size_t held = 0;
    std::uint64_t taken = part.begin;
    while (taken < part.end) {
        const std::size_t room = std::min<std::uint64_t>(buffer.size(), part.end - taken) - held;
        const ssize_t count = readAt(fd, buffer.data() + held, room, taken + held);
        if (count < 0) {
            return false;
        }
        held += static_cast<std::size_t>(count);
        const bool atEnd = taken + held == part.end || static_cast<std::size_t>(count) < room;
        std::string_view rest(buffer.data(), held);
        while (const std::size_t piece = logPieceLength(rest, atEnd)) {
            if (!onPiece(taken, rest.substr(0, piece))) {
                return true;
            }
            taken += piece;
            rest.remove_prefix(piece);
        }
        if (atEnd) {
            return true;
        }
        held = rest.size();
        std::memmove(buffer.data(), rest.data(), held);
    }
    return true;
}

}  // namespace quorbel
