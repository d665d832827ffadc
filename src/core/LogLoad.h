#pragma once

#include "common/LogReader.h"
#include "core/LoadedEvents.h"
#include "platform/Mutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace quorbel {

/// What is to be read of a log file: all of it, or the lines that begin in a part.
struct LogStretch {
    std::filesystem::path path;
    LogSpan span{};
    /// Whether what stands behind the last line end is left to somebody else.
    bool isOfWholeLines = false;
    /// Null for one that is opened when it is its turn.
    std::shared_ptr<const LogFile> file{};
};

/// Cuts log files into what one thread takes at a time: some megabytes of one of them, or many
/// small ones.
class LogCutter {
public:
    /// `bytes` is how much is taken at a time, one at least.
    LogCutter(std::vector<LogStretch> stretches, std::uint64_t bytes)
        : m_stretches(std::move(stretches)), m_bytes(bytes) {}

    struct Part {
        std::shared_ptr<const LogFile> file;
        LogSpan span;
    };
    /// The next parts, in the files' order; none when that was all. A file is opened when its first
    /// part is cut, and one that cannot be opened has none.
    std::vector<Part> next();

private:
    /// So many descriptors may a thread hold open.
    static constexpr std::size_t kMostParts = 32;

    bool openNext();

    std::vector<LogStretch> m_stretches;
    std::uint64_t m_bytes;
    std::size_t m_nextStretch = 0;
    std::shared_ptr<const LogFile> m_file;  // the rest of it comes next; null behind its end
    std::uint64_t m_place = 0;
    std::uint64_t m_end = LogSpan::kNoEnd;
};

/// Reads and packs the events of log files on several threads, and gives them away in the files'
/// order: at the start, and where much was missed. Made, asked and destroyed on one thread.
class LogLoad {
public:
    /// What a few megabytes of log files hold.
    struct Batch {
        LoadedArrivals loaded;
        std::vector<LogExtent> extents;  ///< of each part of a file, in their order
    };

    /// How the work is shared out.
    struct Shares {
        std::size_t threads = processors();
        /// Of the files, to a batch; 0 for what suits their size.
        std::uint64_t bytes = 0;
    };

    /// `now`, in seconds since 1970, is when the events count as arrived. Threads are started when
    /// two have something to do; else next() does it all.
    LogLoad(std::vector<LogStretch> stretches, std::int64_t now, const Shares &shares);
    LogLoad(const std::vector<std::filesystem::path> &files, std::int64_t now,
            const Shares &shares);
    ~LogLoad();
    LogLoad(const LogLoad &) = delete;
    LogLoad &operator=(const LogLoad &) = delete;

    /// How many processors this program may use.
    static std::size_t processors();

    /// How many were started.
    [[nodiscard]] std::size_t threads() const { return m_threads.size(); }
    /// The bytes that the files hold.
    [[nodiscard]] std::uint64_t total() const { return m_total; }
    /// Called every few milliseconds with the bytes read so far.
    using Progress = std::function<void(std::uint64_t read)>;
    /// The next events; nothing when that was all.
    std::optional<Batch> next(const Progress &onProgress);
    /// The next events if they are there already, or if there are no threads; else nothing, nor
    /// when that was all, which isDone() says then.
    std::optional<Batch> poll();
    [[nodiscard]] bool isDone();

private:
    static std::uint64_t batchBytes(const Shares &shares, std::uint64_t total);

    using Parts = std::vector<LogCutter::Part>;

    Batch pack(const Parts &parts, std::size_t &expectedBytes,
               const LogReader::ProgressHandler &onProgress) const;
    void startThreads(std::size_t count);
    void work();
    std::optional<Batch> packHere(const Progress &onProgress);
    Batch giveAway() REQUIRES(m_lock);
    [[nodiscard]] bool isNextPacked() const REQUIRES(m_lock) {
        return !m_packed.empty() && m_packed.begin()->first == m_givenAway;
    }
    [[nodiscard]] bool isOver() const REQUIRES(m_lock) {
        return m_isAllCut && m_givenAway == m_cut;
    }

    std::int64_t m_now;
    std::uint64_t m_total;
    std::size_t m_mostAhead = 0;      // batches that are packed or being packed
    std::size_t m_expectedBytes = 0;  // where no threads were started
    std::atomic<std::uint64_t> m_read = 0;
    std::atomic<bool> m_isEnding = false;

    Mutex m_lock;
    Condition m_hasPacked;
    Condition m_hasRoom;
    LogCutter m_cutter GUARDED_BY(m_lock);
    std::map<std::size_t, Batch> m_packed GUARDED_BY(m_lock);  // by number
    std::size_t m_cut GUARDED_BY(m_lock) = 0;  // batches that a thread has begun, and so on
    std::size_t m_givenAway GUARDED_BY(m_lock) = 0;
    bool m_isAllCut GUARDED_BY(m_lock) = false;
    std::vector<std::thread> m_threads;
};

}  // namespace quorbel
