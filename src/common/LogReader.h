#pragma once

#include "platform/UniqueFd.h"

#include <sys/types.h>

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
    bool isAscii = false;  ///< known to be; what was read with it is looked at together
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

/// How far a log file was read. Its name may stand for another file by now: device and inode say
/// which one it was.
struct LogExtent {
    std::filesystem::path file;
    dev_t device = 0;
    ino_t inode = 0;
    std::uint64_t bytes = 0;   ///< read, from the file's beginning on
    std::uint64_t lines = 0;   ///< where the last line of these ends that has a line feed
    std::uint64_t pieces = 0;  ///< of lines, accepted or not
};

/// A log file that is open. Its parts can be read by several threads at once.
class LogFile {
public:
    explicit LogFile(const std::filesystem::path &file);
    /// One that was opened already.
    LogFile(std::filesystem::path file, UniqueFd source);

    [[nodiscard]] bool isOpen() const { return m_source.isOpen(); }
    /// How many bytes it had when it was opened.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// Which file it is, with nothing read of it.
    [[nodiscard]] const LogExtent &unread() const { return m_unread; }
    [[nodiscard]] int fd() const { return m_source.get(); }

private:
    UniqueFd m_source;
    std::uint64_t m_size = 0;
    LogExtent m_unread;
};

/// A part of a log file: the lines that begin from one offset up to, but not at, another one,
/// whatever stands there. Parts that touch one another have each line of the file once.
struct LogSpan {
    /// The `end` of a part that goes to the end of the file, wherever that is by then.
    static constexpr std::uint64_t kNoEnd = UINT64_MAX;

    std::uint64_t begin = 0;
    std::uint64_t end = kNoEnd;
};

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
    /// handler ended the reading. `extent`, where given, tells how far; its inode is 0 when the
    /// file could not be opened.
    static bool readFile(const std::filesystem::path &file, const LineHandler &onLine,
                         const ProgressHandler &onProgress = {}, LogExtent *extent = nullptr);

    /// Reads a part of a file, like readFile(); from any thread. `extent` tells how far it came;
    /// its bytes and lines are 0 when no line begins in that part. The bytes that `onProgress`
    /// hears of are those of the part, not what was read beyond it.
    static bool readPart(const LogFile &file, const LogSpan &span, const LineHandler &onLine,
                         const ProgressHandler &onProgress, LogExtent &extent);

    /// Feeds every piece of `bytes` (a whole file's content) to `onLine`.
    static void readBytes(std::string_view bytes, const LineHandler &onLine);
};

}  // namespace quorbel
