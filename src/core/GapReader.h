#pragma once

#include "common/LogReader.h"
#include "core/LogLoad.h"
#include "platform/FilePlace.h"
#include "platform/UniqueFd.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// Reads what the log files hold between two places of them, as the start-up load would, some at a
/// time.
class GapReader {
public:
    enum class Start {
        kReady,
        /// From the first place on, the log cannot be told any more: its file is another one, or
        /// later than the second place.
        kLost,
        /// The second place is in a file that was replaced since.
        kOutdated
    };

    explicit GapReader(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    /// Gets ready for what is between two places: the rest of the first one's file, the files of
    /// the days between, and the begin of the second one's.
    Start begin(const FilePlace &from, const FilePlace &to);
    /// Gets ready for all log files, of one up to a place; daily ones that are newer than that and
    /// than `newest` are left out.
    Start beginAnew(const FilePlace &to, const std::string &newest);

    [[nodiscard]] bool isDone() const { return m_parts.empty(); }
    /// About how many bytes there are still to read.
    [[nodiscard]] std::uint64_t bytesLeft() const;
    /// Reads on until all is read or `isTimeUp`, asked now and then.
    void run(const LogReader::LineHandler &onLine, const std::function<bool()> &isTimeUp);
    /// Leaves the rest to somebody else, and is done.
    std::vector<LogStretch> takeRest();

private:
    struct Part {
        std::filesystem::path path;
        UniqueFd file;  ///< opened when it is its turn, but for those of the two places
        std::uint64_t begin = 0;
        std::optional<std::uint64_t> end;  ///< nothing: the file's
    };

    Start add(const std::string &name, const FilePlace *from, const FilePlace &to);
    bool openAt(Part &part, const FilePlace &place) const;

    const std::filesystem::path m_folder;
    std::deque<Part> m_parts;
};

}  // namespace quorbel
