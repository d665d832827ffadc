#include "common/LogReader.h"

#include "platform/DescriptorIo.h"
#include "platform/Files.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <system_error>

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

/// The bytes read; 0 at the end, at an error, and of a file that could not be opened.
std::size_t readOrEnd(const UniqueFd &file, char *buffer, std::size_t room) {
    return static_cast<std::size_t>(
        std::max<ssize_t>(file.isOpen() ? readSome(file.get(), buffer, room) : 0, 0));
}

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

bool LogReader::readFile(const std::filesystem::path &file, const LineHandler &onLine,
                         const ProgressHandler &onProgress) {
    const UniqueFd source = openRegular(file, O_RDONLY);
    std::vector<char> buffer(kBufferSize);
    std::size_t held = 0;
    for (;;) {
        const std::size_t count = readOrEnd(source, buffer.data() + held, buffer.size() - held);
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
