#pragma once

#include "service/export/ExportTarget.h"
#include "service/export/LogSources.h"

#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// Keeps a text file that lists what the log files hold, oldest first: a line of titles and one
/// line an event, fields separated by tabs, or by commas when the file's extension is exactly
/// "csv"; nothing is quoted, as in the front-end's own exports.
///
/// New events are appended in place. When anything else has changed, the file is written anew under
/// another name and then takes the old one's place, so that its readers always see a whole file.
/// For one thread.
class TextExport {
public:
    /// Brings the file up to date. Returns what went wrong, as one line; the file holds whole lines
    /// then, of this run or an earlier one. Ends early, without a problem, once `stop` is set.
    std::optional<std::string> run(const ExportTarget &target, const LogSources &sources,
                                   const std::atomic<bool> &stop);

private:
    /// The file as the last run left it.
    struct Written {
        ExportTarget target;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::vector<LogMark> marks;
    };

    [[nodiscard]] bool canAppend(const ExportTarget &target, const LogSources &sources) const;
    std::optional<std::string> append(const LogSources &sources, const std::atomic<bool> &stop);
    std::optional<std::string> rewrite(const ExportTarget &target, const LogSources &sources,
                                       const std::atomic<bool> &stop);
    void noteWritten(const ExportTarget &target, const LogSources &sources,
                     const struct stat &status);

    std::optional<Written> m_written;
};

}  // namespace quorbel
