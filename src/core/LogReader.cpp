#include "core/LogReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace quorbel {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20U;

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}
bool isSeparator(char c) {
    return c == ',' || isLineEnd(c);
}

/// Takes one of the first three fields off the front of `rest`, with the separator that ends it.
std::string_view takeField(std::string_view &rest) {
    const auto *begin = std::ranges::find_if_not(rest, isSeparator);
    const auto *end = std::find_if(begin, rest.end(), isSeparator);
    const std::string_view field(begin, end);
    rest = end == rest.end() ? std::string_view() : std::string_view(end + 1, rest.end());
    return field;
}

std::string_view takeMessage(std::string_view rest) {
    const auto *begin = std::ranges::find_if_not(rest, isLineEnd);
    return {begin, std::find_if(begin, rest.end(), isLineEnd)};
}

/// Hands every complete piece on and returns how many bytes they took; nothing when the handler
/// ended the reading.
std::optional<std::size_t> handOn(std::string_view bytes, bool atEnd,
                                  const LogReader::LineHandler &onLine) {
    std::size_t taken = 0;
    while (const std::size_t length = logPieceLength(bytes.substr(taken), atEnd)) {
        const auto line = splitLogLine(bytes.substr(taken, length));
        taken += length;
        if (line && !onLine(*line)) {
            return std::nullopt;
        }
    }
    return taken;
}

/// A descriptor of a regular file, or -1. Opening never blocks, whatever stands under that name.
class LogFile {
public:
    explicit LogFile(const std::filesystem::path &file)
        : m_fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        struct stat status {};
        if (m_fd >= 0 && (fstat(m_fd, &status) != 0 || !S_ISREG(status.st_mode))) {
            close(m_fd);
            m_fd = -1;
        }
    }
    ~LogFile() {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    LogFile(const LogFile &) = delete;
    LogFile &operator=(const LogFile &) = delete;

    /// The bytes read; 0 at the end, at an error, and for a file that could not be opened.
    std::size_t readInto(char *buffer, std::size_t room) const {
        ssize_t count = 0;
        do {
            count = m_fd < 0 ? 0 : read(m_fd, buffer, room);
        } while (count < 0 && errno == EINTR);
        return count < 0 ? 0 : static_cast<std::size_t>(count);
    }

private:
    int m_fd;
};

}  // namespace

std::size_t logPieceLength(std::string_view bytes, bool atEnd) {
    const std::size_t limit = std::min(bytes.size(), kLogPieceSize);
    if (limit == 0) {
        return 0;
    }
    if (const void *lineFeed = std::memchr(bytes.data(), '\n', limit)) {
        return static_cast<std::size_t>(static_cast<const char *>(lineFeed) - bytes.data()) + 1;
    }
    return limit == kLogPieceSize || atEnd ? limit : 0;
}

std::optional<LogLine> splitLogLine(std::string_view piece) {
    LogLine line;
    line.date = takeField(piece);
    line.priority = takeField(piece);
    line.host = takeField(piece);
    line.message = takeMessage(piece);
    // A later field is there only when the earlier ones are.
    if (line.message.empty()) {
        return std::nullopt;
    }
    return line;
}

bool LogReader::readFile(const std::filesystem::path &file, const LineHandler &onLine,
                         const ProgressHandler &onProgress) {
    const LogFile source(file);
    std::vector<char> buffer(kBufferSize);
    std::size_t held = 0;
    for (;;) {
        const std::size_t count = source.readInto(buffer.data() + held, buffer.size() - held);
        held += count;
        const auto taken = handOn({buffer.data(), held}, count == 0, onLine);
        if (!taken || (onProgress && !onProgress(count))) {
            return false;
        }
        if (count == 0) {
            return true;
        }
        held -= *taken;
        std::memmove(buffer.data(), buffer.data() + *taken, held);
    }
}

void LogReader::readBytes(std::string_view bytes, const LineHandler &onLine) {
    handOn(bytes, true, onLine);
}

}  // namespace quorbel
