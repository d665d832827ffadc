#pragma once

#include "platform/ArchivedCounts.h"
#include "platform/DateFormat.h"
#include "platform/UniqueFd.h"
#include "platform/Value.h"
#include "service/store/LogStore.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorbel {

/// Takes the events that the user deleted out of the log files.
///
/// They are named by "seconds,priority,host,message\n", each with how many of them to remove. A
/// line of a log file matches to the letter, or else when its time, shown in one of the date
/// formats and read back, is the named time: a format without seconds cannot give them back to the
/// front-end. A time that cannot be read back is named as 0. Lines that match to the letter go
/// first.
class EventRemoval {
public:
    /// The formats as settings hold them, the likeliest first.
    explicit EventRemoval(const std::vector<std::string> &dateFormats);

    /// Takes the wanted events from a command. They are views of `events`, which must outlive the
    /// object. False when a count is no number; nothing is to be removed then.
    bool want(const Dictionary &events);
    /// The same from the archive of one. False, too, when two of its lines are equal: of those a
    /// dictionary has only the first.
    bool want(ArchivedCounts &events);

    /// Reads each log file once, and rewrites those that hold some of the events. Returns what
    /// went wrong, as one line; the other files are done nevertheless. Gives up soon after `stop`
    /// was set; what was removed by then stays removed.
    std::optional<std::string> run(LogStore &store, const std::atomic<bool> &stop);

private:
    struct Match {
        std::size_t file;  ///< index into m_files
        ByteRange range;
    };
    struct Wanted {
        std::uint64_t count = 0;
        std::vector<Match> inexact;  ///< at most `count`
    };
    struct File {
        std::string name;
        UniqueFd fd;
        std::vector<ByteRange> ranges;
    };

    /// A date format with the last conversion, so that a line costs no allocation.
    struct ShownIn {
        std::unique_ptr<DateFormat> format;
        std::string date;
        std::string time;
    };

    bool want(std::string_view line, std::string_view count);
    bool search(LogStore &store, const std::string &name, const std::atomic<bool> &stop);
    void matchPiece(std::uint64_t offset, std::string_view piece, bool atLineBegin);
    void takeInexactMatches();
    static std::string_view displayedTime(ShownIn &shown, std::string_view date);

    std::vector<ShownIn> m_formats;
    std::unordered_map<std::string_view, Wanted> m_wanted;
    std::vector<File> m_files;

    std::string m_key;  ///< of matchPiece(), kept so that a line costs no allocation
};

}  // namespace quorbel
