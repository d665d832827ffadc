#pragma once

#include "common/LogReader.h"
#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "service/output/FeedCursor.h"
#include "service/store/LogFollower.h"
#include "service/store/LogStore.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// One output's way through the log files: what comes next, and what has reached its receiver.
///
/// Each line has a running number. Both are found again after the process or the machine stopped,
/// in "NAME.cursor" of the folder: it holds a place for each log file, as a clock that is set back
/// makes events go to an older one, and the next number. When events are taken out of a log file
/// or put into it, the places move with it in the same step. What is put in in front of a place is
/// not sent, as it was, or was counted as removed.
///
/// A new feed begins with all that the log files hold (`history`) or behind it, and so does one
/// whose cursor somebody has spoilt, which is set aside and said in the journal. Its first number
/// is the time in microseconds since 1970: no number of a cursor that is gone comes again.
///
/// For one thread, but for what says otherwise.
class EventFeed : private LogFollower {
public:
    struct Settings {
        std::string name;      ///< of the output: names its files, and stands in the journal
        bool kept = false;     ///< see take()
        bool history = false;  ///< a new feed begins with what was stored before it
    };
    /// Makes the folder if need be, and finds its places, or decides on them when it is new: what
    /// is stored from then on is in it. `store` must outlive the object.
    EventFeed(LogStore &store, std::filesystem::path folder, Settings settings);
    ~EventFeed() override;
    EventFeed(const EventFeed &) = delete;
    EventFeed &operator=(const EventFeed &) = delete;

    struct Piece {
        std::uint64_t first = 0;  ///< the running number of the first line
        std::size_t count = 0;    ///< of lines; that of each is one more than that of the last
        std::string lines;        ///< whole, with their ends; not all need be events (forEachEvent)
    };
    /// The next lines, at most about `mostBytes` (4 KiB at least); nothing when there are none yet,
    /// or when problem() says why they cannot be had: it is worth another try later.
    ///
    /// With `kept`, the piece is written down and synced in "NAME.batch" before it is returned, and
    /// is what take() gives, in a later process too, byte for byte with its numbers, until it is
    /// acknowledged. Otherwise many pieces may be under way, and those that were not acknowledged
    /// are read again after a rewind(), as they stand in the log by then.
    std::optional<Piece> take(std::size_t mostBytes);

    /// All below `number` has reached its receiver; synced before it returns. It counts for whole
    /// pieces: a part of one is acknowledged with the rest. False with errno when it could not be
    /// written down; it is as if it had not been called then.
    bool acknowledge(std::uint64_t number);
    /// take() begins again behind what was acknowledged.
    void rewind();

    /// Why the last take() could not go on, as one line; empty when it could.
    [[nodiscard]] const std::string &problem() const { return m_problem; }

    /// How far the receiver is behind the log files.
    struct Lag {
        std::uint64_t events = 0;  ///< lines; exact for some megabytes, estimated above
        std::int64_t seconds = 0;  ///< the age of the first of them
    };
    /// Looks at all log files.
    Lag measure();

    /// How many lines were removed from the log files before they were acknowledged, or, with
    /// `kept`, taken, since the cursor was made. Any thread.
    [[nodiscard]] std::uint64_t removedUnsent() const { return m_removedUnsent; }

private:
    /// A piece under way.
    struct Taken {
        std::uint64_t first = 0;
        std::size_t count = 0;
        std::int64_t seconds = 0;         ///< of its first line
        std::string name;                 ///< of the log file that it is of
        std::optional<FeedPlace> behind;  ///< where that goes on; nothing: it is gone
    };
    /// What can be taken of a log file.
    struct Unread {
        std::string name;
        std::string lines;
        FeedPlace behind;
    };
    /// When all log files were looked at.
    struct Scan {
        std::uint64_t edits = 0;
        std::uint64_t fileChanges = 0;
        std::chrono::steady_clock::time_point time;
        std::string appended;  ///< which file was appended to
    };

    bool open() REQUIRES(m_mutex);
    bool load() REQUIRES(m_mutex);
    bool resume(FeedCursor cursor) REQUIRES(m_mutex);
    void noteShortened() REQUIRES(m_mutex);
    bool loadBatch() REQUIRES(m_mutex);
    bool beginAnew() REQUIRES(m_mutex);
    bool placeBehindAll() REQUIRES(m_mutex);
    bool write(const FeedCursor &cursor) REQUIRES(m_mutex);
    bool fail(const std::string &what) REQUIRES(m_mutex);
    void warn(const std::string &what) const;
    [[nodiscard]] std::filesystem::path file(const char *extension) const;

    bool keep(const Piece &piece, const Taken &taken) REQUIRES(m_mutex);
    [[nodiscard]] std::uint64_t nextNumber() const REQUIRES(m_mutex);

    // EventFeedFiles.cpp
    std::optional<Unread> findUnread(std::size_t mostBytes) REQUIRES(m_mutex);
    std::optional<Unread> scan(std::size_t mostBytes) REQUIRES(m_mutex);
    [[nodiscard]] bool needsScan() const REQUIRES(m_mutex);
    std::optional<Unread> look(const std::string &name, std::size_t mostBytes) REQUIRES(m_mutex);
    std::optional<Unread> read(const std::string &name, const UniqueFd &source,
                               std::size_t mostBytes) REQUIRES(m_mutex);
    void findPlaces(const std::string &name, const UniqueFd &source) REQUIRES(m_mutex);
    [[nodiscard]] const FeedPlace *placeIn(const std::string &name) const REQUIRES(m_mutex);
    /// Lets `change` have each place that the feed has in a file; false takes it away.
    void eachPlaceIn(const std::string &name, const std::function<bool(FeedPlace &)> &change)
        REQUIRES(m_mutex);
    void forgetGone(const std::vector<std::string> &names) REQUIRES(m_mutex);
    void addUnread(const std::string &name, Lag &lag, std::uint64_t &bytes) REQUIRES(m_mutex);

    // EventFeedEdits.cpp
    bool onEdit(const LogEdit &edit, const std::function<bool()> &commit) override;
    [[nodiscard]] FeedCursor::Move moveFor(const LogEdit &edit) const REQUIRES(m_mutex);
    [[nodiscard]] std::uint64_t unsentOf(const LogEdit &edit) const REQUIRES(m_mutex);
    void finishEdit(const LogEdit &edit, std::uint64_t unsent) REQUIRES(m_mutex);

    LogStore &m_store;
    const std::filesystem::path m_folder;
    const Settings m_settings;
    std::string m_problem;
    std::atomic<std::uint64_t> m_removedUnsent = 0;

    // Held while a log file is replaced, and otherwise by the feed's thread.
    Mutex m_mutex;
    bool m_isOpen GUARDED_BY(m_mutex) = false;
    bool m_isWritten GUARDED_BY(m_mutex) = false;  ///< a new cursor
    FeedCursor m_cursor GUARDED_BY(m_mutex);
    std::deque<Taken> m_taken GUARDED_BY(m_mutex);
    std::optional<Piece> m_batch GUARDED_BY(m_mutex);
    std::string m_current GUARDED_BY(m_mutex);       ///< the log file that was read last
    std::optional<Scan> m_scan GUARDED_BY(m_mutex);  ///< the last one that found nothing
    // Of the lines taken so far.
    std::uint64_t m_lineBytes GUARDED_BY(m_mutex) = 0;
    std::uint64_t m_lineCount GUARDED_BY(m_mutex) = 0;
};

/// Calls `onEvent` with each event of a piece and its number; lines that are none have one, too.
void forEachEvent(const EventFeed::Piece &piece,
                  const std::function<void(std::uint64_t number, const LogLine &line)> &onEvent);

}  // namespace quorbel
