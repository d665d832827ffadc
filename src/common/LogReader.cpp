#include "common/LogReader.h"

#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "platform/Utf8.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

/// Small enough to stay in a processor's cache between the copy into it and the look at it.
constexpr std::size_t kBufferSize = std::size_t{1} << 17U;

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}

constexpr auto kIsSeparator = [] {
    std::array<bool, 256> table{};
    table[','] = table['\r'] = table['\n'] = true;
    return table;
}();

bool isSeparator(char c) {
    return kIsSeparator[static_cast<unsigned char>(c)];
}

/// Takes one of the first three fields off the front of `rest`, with the separator that ends it.
std::string_view takeField(std::string_view &rest) {
    const char *at = rest.data();
    const char *const end = at + rest.size();
    while (at != end && isSeparator(*at)) {
        ++at;
    }
    const char *const begin = at;
    while (at != end && !isSeparator(*at)) {
        ++at;
    }
    rest = at == end ? std::string_view() : std::string_view(at + 1, end);
    return {begin, at};
}

/// A piece has no line feed but at its end.
std::string_view takeMessage(std::string_view rest) {
    while (!rest.empty() && isLineEnd(rest.front())) {
        rest.remove_prefix(1);
    }
    if (!rest.empty() && rest.back() == '\n') {
        rest.remove_suffix(1);
    }
    return rest.substr(0, rest.find('\r'));
}

/// A line as the service writes it: four fields, none of the first three empty, CR LF at the end.
/// False for any other.
bool splitPlainLine(std::string_view piece, LogLine &line) {
    if (!piece.ends_with("\r\n")) {
        return false;
    }
    piece.remove_suffix(2);
    const std::size_t first = piece.find(',');
    const std::size_t second = piece.find(',', first + 1);
    const std::size_t third = piece.find(',', second + 1);
    const bool areFieldsFull = first != 0 && first != std::string_view::npos &&
                               second > first + 1 && second != std::string_view::npos &&
                               third > second + 1 && third < piece.size() - 1;
    if (!areFieldsFull || piece.find('\r') != std::string_view::npos) {
        return false;
    }
    line.date = piece.substr(0, first);
    line.priority = piece.substr(first + 1, second - first - 1);
    line.host = piece.substr(second + 1, third - second - 1);
    line.message = piece.substr(third + 1);
    return true;
}

/// Hands on every complete piece of the lines that begin before `end`, and returns how many bytes
/// they took; nothing when the handler ended the reading. `extent` grows by them.
std::optional<std::size_t> handOn(std::string_view bytes, bool atEnd, std::uint64_t end,
                                  const LogReader::LineHandler &onLine, LogExtent &extent) {
    const bool isAscii = asciiPrefixLength(bytes) == bytes.size();
    std::size_t taken = 0;
    while (extent.lines < end || extent.bytes > extent.lines) {
        const std::size_t length = logPieceLength(bytes.substr(taken), atEnd);
        if (length == 0) {
            break;
        }
        auto line = splitLogLine(bytes.substr(taken, length));
        taken += length;
        ++extent.pieces;
        extent.bytes += length;
        if (bytes[taken - 1] == '\n') {
            extent.lines = extent.bytes;
        }
        if (!line) {
            continue;
        }
        line->isAscii = isAscii;
        if (!onLine(*line)) {
            return std::nullopt;
        }
    }
    return taken;
}

/// What stands in a file around a place that moves forward.
class Window {
public:
    Window(const LogFile &file, std::uint64_t place) : m_file(file), m_place(place) {}

    /// The bytes from place() on, as far as they were read.
    [[nodiscard]] std::string_view bytes() const { return {m_buffer.data(), m_held}; }
    [[nodiscard]] std::uint64_t place() const { return m_place; }
    /// Where the bytes end.
    [[nodiscard]] std::uint64_t end() const { return m_place + m_held; }

    /// Reads on, not much beyond `end`. False at the end of the file, at an error, and of a file
    /// that could not be opened.
    bool read(std::uint64_t end) {
        const std::uint64_t wanted = std::max(end, this->end()) - this->end();
        const std::size_t room = m_buffer.size() - m_held;
        const std::size_t count =
            readOrEnd(wanted < room ? std::min<std::size_t>(wanted + kLogPieceSize, room) : room);
        m_held += count;
        return count > 0;
    }
    /// Moves the place forward over bytes that were read.
    void pass(std::size_t count) {
        m_held -= count;
        m_place += count;
        std::memmove(m_buffer.data(), m_buffer.data() + count, m_held);
    }

private:
    std::size_t readOrEnd(std::size_t room) {
        ssize_t count = 0;
        do {
            count = ::pread(m_file.fd(), m_buffer.data() + m_held, room, static_cast<off_t>(end()));
        } while (count < 0 && errno == EINTR);
        return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }

    const LogFile &m_file;
    std::uint64_t m_place;
    std::vector<char> m_buffer = std::vector<char>(kBufferSize);
    std::size_t m_held = 0;
};

/// Moves on to where the first line of a part begins, which is behind a line feed. False when none
/// begins there.
bool findFirstLine(Window &window, const LogSpan &span) {
    if (span.begin == 0) {
        return true;
    }
    while (window.place() < span.end && window.read(span.end)) {
        const std::size_t lineFeed = window.bytes().find('\n');
        if (lineFeed != std::string_view::npos) {
            window.pass(lineFeed + 1);
            return window.place() < span.end;
        }
        window.pass(window.bytes().size());
    }
    return false;
}

/// Tells of each byte of a part once.
class Progress {
public:
    Progress(const LogSpan &span, const LogReader::ProgressHandler &handler)
        : m_span(span), m_handler(handler), m_told(span.begin) {}

    bool reached(std::uint64_t place) {
        const std::uint64_t within = std::clamp(place, m_told, m_span.end);
        const std::uint64_t count = within - std::exchange(m_told, within);
        return !m_handler || m_handler(static_cast<std::size_t>(count));
    }

private:
    const LogSpan &m_span;
    const LogReader::ProgressHandler &m_handler;
    std::uint64_t m_told;
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
    std::optional<LogLine> line(std::in_place);
    // Nearly every line is plain, and finding whole fields is quicker than looking at each byte.
    if (splitPlainLine(piece, *line)) {
        return line;
    }
    line->date = takeField(piece);
    line->priority = takeField(piece);
    line->host = takeField(piece);
    line->message = takeMessage(piece);
    // A later field is there only when the earlier ones are.
    if (line->message.empty()) {
        line.reset();
    }
    return line;
}

std::vector<std::filesystem::path> logFiles() {
    const auto folder = libraryFolder();
    std::vector<std::filesystem::path> files;
    for (const std::string &name : listFolder(folder)) {
        if (hasExtension(name, "log")) {
            files.push_back(folder / name);
        }
    }
    return files;
}

std::uint64_t totalSize(const std::vector<std::filesystem::path> &files) {
    std::uint64_t total = 0;
    for (const auto &file : files) {
        std::error_code error;
        const std::uint64_t size = std::filesystem::file_size(file, error);
        total += error ? 0 : size;
    }
    return total;
}

LogFile::LogFile(const std::filesystem::path &file) : LogFile(file, openRegular(file, O_RDONLY)) {}

LogFile::LogFile(std::filesystem::path file, UniqueFd source)
    : m_source(std::move(source)), m_unread{.file = std::move(file)} {
    struct stat status {};
    if (m_source.isOpen() && ::fstat(m_source.get(), &status) == 0) {
        m_size = static_cast<std::uint64_t>(status.st_size);
        m_unread.device = status.st_dev;
        m_unread.inode = status.st_ino;
    }
}

bool LogReader::readFile(const std::filesystem::path &file, const LineHandler &onLine,
                         const ProgressHandler &onProgress, LogExtent *extent) {
    LogExtent unasked;
    return readPart(LogFile(file), {}, onLine, onProgress, extent != nullptr ? *extent : unasked);
}

bool LogReader::readPart(const LogFile &file, const LogSpan &span, const LineHandler &onLine,
                         const ProgressHandler &onProgress, LogExtent &extent) {
    extent = file.unread();
    Progress progress(span, onProgress);
    Window window(file, span.begin - std::min<std::uint64_t>(span.begin, 1));
    if (!findFirstLine(window, span)) {
        return progress.reached(window.end());
    }
    extent.bytes = extent.lines = window.place();
    for (bool isThereMore = true; isThereMore;) {
        isThereMore = window.read(span.end);
        const auto taken = handOn(window.bytes(), !isThereMore, span.end, onLine, extent);
        if (!taken || !progress.reached(window.end())) {
            return false;
        }
        window.pass(*taken);
        isThereMore &= extent.lines < span.end || extent.bytes > extent.lines;
    }
    return true;
}

void LogReader::readBytes(std::string_view bytes, const LineHandler &onLine) {
    LogExtent extent;
    handOn(bytes, true, LogSpan::kNoEnd, onLine, extent);
}

}  // namespace quorbel
