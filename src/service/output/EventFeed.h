#pragma once

#include "platform/Mutex.h"
#include "service/output/FeedCursor.h"
#include "service/store/LogStore.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace quorbel {

/// One output's way through the log files: what comes next, and what has reached its receiver.
///
/// Each line has a running number. Both are found again after the process or the machine stopped,
/// in "NAME.cursor" of the folder: it holds a place for each log file, as a clock that is set back
/// makes events go to an older one, and the next number. When events are taken out of a log file
/// or put into it, the places move with it in the same step.
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
    /// Makes the folder if need be. `store` must outlive the object.
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
    /// is what comes first after a rewind() or in a later process, byte for byte with its numbers,
    /// until it is acknowledged; nothing else comes before that. Otherwise many pieces may be under
    /// way, and lines that were not acknowledged are read again then, as they stand in the log.
    std::optional<Piece> take(std::size_t mostBytes);

    /// All below `number` has reached its receiver; synced before it returns. It counts for whole
    /// pieces: a part of one is acknowledged with the rest. False with errno when it could not be
    /// written down; it is as if it had not been called then.
    bool acknowledge(std::uint64_t number);
    /// take() begins again behind what was acknowledged.
    void rewind();

    /// Why take() cannot go on, as one line; empty when it can.
    [[nodiscard]] const std::string &problem() const { return m_problem; }

    /// How far the receiver is behind the log files.
    struct Lag {
        std::uint64_t events = 0;  ///< exact up to some thousands, estimated above
        std::int64_t seconds = 0;  ///< the age of the oldest of them
    };
    /// Looks at all log files.
    Lag measure();

    /// How many lines were removed from the log files before they had reached the receiver, since
    /// the cursor was made. Any thread.
    [[nodiscard]] std::uint64_t removedUnsent() const { return m_removedUnsent; }

private:
    struct Source;
    struct Taken {
        std::uint64_t first;
        std::size_t count;
        std::int64_t seconds;       ///< of the first
        FeedCursor::Places behind;  ///< where the files that it has lines of go on
    };

    bool onEdit(const LogEdit &edit, const std::function<bool()> &commit) override;

    LogStore &m_store;
    const std::filesystem::path m_folder;
    const Settings m_settings;
    std::string m_problem;
    std::atomic<std::uint64_t> m_removedUnsent = 0;

    // Held while a log file is replaced, and otherwise by the feed's thread.
    Mutex m_mutex;
};

/// Calls `onEvent(number, line)` with each event of a piece: lines that are none have a number,
/// too.
void forEachEvent(const EventFeed::Piece &piece,
                  const std::function<void(std::uint64_t number, const LogLine &line)> &onEvent);

}  // namespace quorbel
