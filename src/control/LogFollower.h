#pragma once

#include "common/LogReader.h"
#include "platform/UniqueFd.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace quorbel {

/// Hears of the lines that are added to the log files of a folder, each once, also when the service
/// begins a file for a new day, or replaces one because events were removed from it.
///
/// A file that is replaced is read to its end first. In the new one, what has been told already is
/// known by its lines; this looks no further back than the second of the last line. Single thread.
class LogFollower {
public:
    /// Begins with what is there now. See isWatching().
    explicit LogFollower(std::filesystem::path folder);
    ~LogFollower();
    LogFollower(const LogFollower &) = delete;
    LogFollower &operator=(const LogFollower &) = delete;

    /// False when the folder cannot be watched, with errno of the constructor in error(), or is no
    /// more.
    [[nodiscard]] bool isWatching() const { return m_watch.isOpen(); }
    [[nodiscard]] int error() const { return m_error; }

    /// The files that were there in the beginning, the oldest first, and how much of each counts as
    /// known.
    [[nodiscard]] const std::map<std::string, std::uint64_t> &known() const { return m_begin; }

    /// An open file of those, as long as nothing was read; -1 for those that are opened when
    /// needed.
    [[nodiscard]] int sourceOf(const std::string &name) const;

    /// To wait for: readable when something may have been added.
    [[nodiscard]] int fd() const { return m_watch.get(); }
    /// Hands on what was added; does not wait. `onLine` must not end it.
    void read(const LogReader::LineHandler &onLine);

private:
    struct File {
        UniqueFd source;  ///< not open when nothing was read of it yet
        dev_t device = 0;
        ino_t inode = 0;
        std::uint64_t offset = 0;
    };
    struct Change {
        bool isNew = false;  ///< it was made under its name, not moved there
        bool isGone = false;
    };
    using Changes = std::map<std::string, Change>;
    using Seen = std::unordered_map<std::size_t, std::size_t>;

    void takeStock();
    Changes changes();
    void look(const std::string &name, Change change, const LogReader::LineHandler &onLine);
    void readOn(File &file, const LogReader::LineHandler &onLine);
    void replace(File &file, UniqueFd by, const LogReader::LineHandler &onLine);
    [[nodiscard]] std::optional<std::int64_t> lastMoment(const File &file) const;

    std::filesystem::path m_folder;
    UniqueFd m_watch;
    int m_error = 0;
    std::map<std::string, std::uint64_t> m_begin;
    std::map<std::string, File> m_files;
};

}  // namespace quorbel
