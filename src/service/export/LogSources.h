#pragma once

#include "common/LogReader.h"
#include "platform/UniqueFd.h"
#include "service/store/LogStore.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// How much of a log file an export holds, and by what to tell the next time whether the file has
/// only grown since. Inode numbers are used again soon, so there is more to go by.
struct LogMark {
    std::string name;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::uint64_t tail = 0;  ///< a hash of the last bytes in front of `size`
    bool open = false;       ///< these bytes end within a line

    bool operator==(const LogMark &) const = default;
};

/// A log file that is open for reading, as it stands at one moment.
class LogSource {
public:
    LogSource(std::string name, UniqueFd file, std::uint64_t size);

    [[nodiscard]] const LogMark &mark() const { return m_mark; }
    /// Whether the file begins with what was there when `mark` was made.
    [[nodiscard]] bool continues(const LogMark &mark) const;

    /// Returns whether to go on.
    using LineHandler = std::function<bool(const LogLine &line)>;
    /// Reads the lines from `begin`, where a line begins, up to the mark's size, as readers of the
    /// log files take them, until `onLine` wants no more. False, with errno, when the file cannot
    /// be read.
    [[nodiscard]] bool read(std::uint64_t begin, const LineHandler &onLine) const;

private:
    UniqueFd m_file;
    LogMark m_mark;
};

/// The log files of a store, oldest first.
class LogSources {
public:
    /// Looks at the files as they are now. What a file holds stays readable until the object is
    /// gone.
    explicit LogSources(LogStore &store);

    [[nodiscard]] const std::vector<LogSource> &all() const { return m_sources; }
    /// What could not be read, and why; empty when there is nothing.
    [[nodiscard]] const std::string &problem() const { return m_problem; }

private:
    void noteFolderProblem();

    std::vector<LogSource> m_sources;
    std::string m_problem;
};

}  // namespace quorbel
