#pragma once

#include "common/RetentionRules.h"
#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "platform/Value.h"
#include "service/store/ClockTrust.h"
#include "service/store/LogStore.h"
#include "service/store/RemovalFeed.h"

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

namespace quorbel {

/// Removes events from the log files once they were kept for as long as the settings want, and
/// offers each of them to be told. On a thread of its own: at once when the settings change, and
/// then every minute, reading only the files in which something can be due. A file that has not
/// grown since it was read is not read again before something that was found in it is due. While
/// the clock is not to be believed, nothing is removed, which the journal says once.
class Retention {
public:
    using Now = std::function<ClockReading()>;

    /// Both must outlive the object.
    Retention(LogStore &store, RemovalFeed &feed);
    Retention(LogStore &store, RemovalFeed &feed, Now now, std::chrono::milliseconds interval);
    /// Closes the feed. What was removed and not told is counted.
    ~Retention();
    Retention(const Retention &) = delete;
    Retention &operator=(const Retention &) = delete;

    // From any thread.

    void configure(const Dictionary &settings);
    /// Begins no other file from now on, and leaves the one in work as it was.
    void stop();
    /// Whether a file is being dealt with, or its events are being told.
    [[nodiscard]] bool isBusy() const { return m_busy; }
    [[nodiscard]] std::uint64_t removed() const { return m_removed; }
    /// How many of the removed events could not be told.
    [[nodiscard]] std::uint64_t untold() const { return m_untold; }

private:
    /// What is known of a file from when it was last looked at.
    struct Known {
        dev_t device = 0;
        ino_t inode = 0;
        std::uint64_t size = 0;     ///< of the part that was looked at, as far as it stayed
        std::int64_t due = 0;       ///< when there may be something to remove from that part
        std::int64_t dueGrown = 0;  ///< the same with what was added behind it

        [[nodiscard]] bool isSameFile(const Known &other) const {
            return device == other.device && inode == other.inode;
        }
    };
    /// What was found in a file.
    struct Found {
        std::vector<ByteRange> expired;  ///< merged where they touch
        std::uint64_t count = 0;
        std::uint64_t size = 0;  ///< of what was looked at, without the expired
        /// The oldest event of each class that stays.
        RetentionRules::Limits oldest;
    };

    void work();
    void tendFiles(const ClockReading &clock);
    void noteBelief(bool isBelieved);
    void tend(const std::string &name, std::int64_t now);
    bool tendOpened(const std::string &name, std::int64_t now, Known &known);
    [[nodiscard]] std::int64_t oldestIn(const std::string &name) const;
    bool search(const UniqueFd &file, const RetentionRules::Limits &limits, Found &found);
    [[nodiscard]] std::int64_t nextDue(const Found &found) const;
    std::size_t classOf(std::string_view priority);
    void tell(const UniqueFd &file, const Found &found);
    void note(const std::string &name, const char *what);

    LogStore &m_store;
    RemovalFeed &m_feed;
    const Now m_now;
    const std::chrono::milliseconds m_interval;
    std::atomic<bool> m_busy = false;
    std::atomic<std::uint64_t> m_removed = 0;
    std::atomic<std::uint64_t> m_untold = 0;

    // Of the thread alone.
    RetentionRules m_rules;
    ClockTrust m_clock;
    bool m_waits = false;  ///< for a clock that can be believed; it was said
    std::int64_t m_lastPass = 0;
    std::map<std::string, Known> m_known;
    std::unordered_map<std::string, std::size_t> m_classes;
    std::string m_priority;
    std::map<std::string, std::string> m_problems;  ///< what was last said of each file

    Mutex m_mutex;
    Condition m_wake;
    RetentionRules m_wantedRules GUARDED_BY(m_mutex);
    bool m_rulesChanged GUARDED_BY(m_mutex) = false;
    std::atomic<bool> m_stop = false;  ///< set under m_mutex

    std::thread m_thread;
};

}  // namespace quorbel
