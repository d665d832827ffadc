#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

// The log files' line format: four fields, "date,priority,host,message", ended by CR LF.

/// The most bytes of a line that are taken at once; the rest is read as a line of its own.
inline constexpr std::size_t kLogPieceSize = 1023;

/// One accepted line. Views into the reader's buffer.
struct LogLine {
    std::string_view date;
    std::string_view priority;
    std::string_view host;
    std::string_view message;
};

/// Splits one piece of a log file: at most kLogPieceSize bytes, without a line feed but at its end.
///
/// The first three fields end at a comma, CR or LF, the message only at CR or LF. Separators before
/// a field are skipped, so empty fields do not exist and later ones move forward. Nothing unless
/// all four fields are there. The bytes need not be UTF-8.
std::optional<LogLine> splitLogLine(std::string_view piece);

/// The length of the first piece of `bytes`; 0 when it could go on in bytes that are not there yet.
/// `atEnd` says that there are none.
std::size_t logPieceLength(std::string_view bytes, bool atEnd);

/// The log files that the service keeps, in the order of their folder's listing: whatever has the
/// extension "log".
std::vector<std::filesystem::path> logFiles();

/// The bytes of files; one that is missing has none.
std::uint64_t totalSize(const std::vector<std::filesystem::path> &files);

/// Reads log files as their readers see them, piece by piece, in one pass with a fixed buffer.
class LogReader {
public:
    /// Called with each accepted line; the views last as long as the call. Returning false ends the
    /// reading.
    using LineHandler = std::function<bool(const LogLine &line)>;
    /// Called now and then with the bytes read since the last call; returning false ends the
    /// reading.
    using ProgressHandler = std::function<bool(std::size_t bytes)>;

    /// Reads one file to its end. A file that cannot be opened gives no lines. Returns false when a
    /// handler ended the reading.
    static bool readFile(const std::filesystem::path &file, const LineHandler &onLine,
                         const ProgressHandler &onProgress = {});

    /// Feeds every piece of `bytes` (a whole file's content) to `onLine`.
    static void readBytes(std::string_view bytes, const LineHandler &onLine);
};

}  // namespace quorbel
