#pragma once

#include "platform/FilePlace.h"
#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "service/store/LogFiles.h"
#include "service/store/LogFollower.h"
#include "service/store/SpareDescriptors.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quorbel {

class AppendWaker;

/// The folder of daily log files: appends events, gets them to disk, takes events out and puts
/// them back.
///
/// append() is for one thread; everything else may be called from any thread at any time. A thread
/// of the store's own syncs what was appended: within about a second, at once for urgent events.
/// When events cannot be stored or synced, and when they can again, the journal gets one line.
class LogStore {
public:
    explicit LogStore(std::filesystem::path folder);
    /// Syncs what was appended.
    ~LogStore();
    LogStore(const LogStore &) = delete;
    LogStore &operator=(const LogStore &) = delete;

    /// Makes the folder if need be, removes what an interrupted rewrite left, and repairs the ends
    /// of the daily files. What fails is said in the journal; the store works as soon as it can.
    void prepare();

    struct Result {
        std::size_t stored = 0;
        std::size_t notStored = 0;
        FilePlace behind{};  ///< where the log goes on behind what was stored, if anything was
    };
    /// Appends whole lines to the file of the day that `seconds` since 1970 falls into. Of lines
    /// for which there is no room none is left behind in part.
    Result append(std::string_view lines, std::int64_t seconds, bool urgent);

    /// How many of the stored events may be lost when the machine stops, because syncing them has
    /// failed: the kernel forgets then what it could not write, and a later sync does not mean
    /// them.
    [[nodiscard]] std::uint64_t unsynced() const { return m_unsynced; }

    /// The names of all log files, oldest first. Nothing, with errno, when the folder cannot be
    /// listed: that is not the same as no files.
    [[nodiscard]] std::optional<std::vector<std::string>> fileNames() const;
    [[nodiscard]] std::filesystem::path path(const std::string &name) const;
    /// A file's size between two calls of append(): it ends in a whole line.
    std::uint64_t settledSize(const UniqueFd &file);

    /// Where the log goes on behind everything that was stored; for the thread of append().
    [[nodiscard]] FilePlace end();
    /// How often a file was replaced or removed since the store was made.
    [[nodiscard]] std::uint64_t edits() const { return m_edits; }

    /// The name of the file that append() used last; empty when there was none.
    [[nodiscard]] std::string appendedFile();
    /// How often append() has gone over to another file.
    [[nodiscard]] std::uint64_t fileChanges() const { return m_fileChanges; }

    /// From then on `follower` is asked before a log file is replaced. Both may wait until one that
    /// is being replaced is done.
    void addFollower(LogFollower &follower);
    void removeFollower(LogFollower &follower);

    /// Whoever takes events out or puts them in holds this from the search for their places on:
    /// their places in a file are its own only as long as nobody else replaces it.
    [[nodiscard]] Mutex &editLock() RETURNS_LOCK(m_editMutex) { return m_editMutex; }
    /// Replaces a file by one without the ranges (ascending, disjoint, below a settled size), in
    /// one step. `file` is the file, open for reading. Events that arrive meanwhile are kept; they
    /// wait only when they arrive all the time, while the last of them are copied and synced. A
    /// file of which nothing is left is removed.
    /// False when that fails, with errno; the file is as it was then. That is also how it ends,
    /// with ECANCELED, soon after `stop` was set.
    bool cutOut(const std::string &name, const UniqueFd &file, const std::vector<ByteRange> &ranges,
                const std::atomic<bool> &stop = kNeverStop) REQUIRES(m_editMutex);
    /// Replaces a file by one with more in it, in the same way: `insertions` ascend, each at the
    /// begin of a line or behind the last one. A file that is empty still when that fails is
    /// removed: whoever made it for this need not care.
    bool putIn(const std::string &name, const UniqueFd &file,
               const std::vector<Insertion> &insertions, const std::atomic<bool> &stop = kNeverStop)
        REQUIRES(m_editMutex);

private:
    friend class AppendWaker;
    static inline const std::atomic<bool> kNeverStop = false;

    bool openFor(const std::string &name) REQUIRES(m_mutex);
    Result write(std::string_view lines) REQUIRES(m_mutex);
    [[nodiscard]] FilePlace placeBefore(std::size_t unwritten) const REQUIRES(m_mutex);
    void retireFile() REQUIRES(m_mutex);
    void noteState(std::int64_t seconds, std::size_t lost, int error);
    [[nodiscard]] bool repairFile(const std::string &name) const;

    /// What becomes of a file.
    struct Edit {
        const LogChange &change;
        std::uint64_t size;  ///< of what it is replaced by, as far as is known
        /// Appends a part of it, as it is to be, to another file; parts follow one another.
        std::function<bool(ByteRange part, int to)> copy;
    };
    bool replace(const std::string &name, const UniqueFd &file, const Edit &edit,
                 const std::atomic<bool> &stop);
    bool copySettled(const UniqueFd &file, const Edit &edit, int to, std::uint64_t &copied,
                     const std::atomic<bool> &stop);
    bool swap(const std::string &name, const UniqueFd &file, const Edit &edit,
              const UniqueFd &replacement, std::uint64_t copied);
    bool removeWhole(const std::string &name, const UniqueFd &file, std::uint64_t size);
    /// Does `step` when all followers let it be done.
    bool commit(const LogEdit &edit, const std::function<bool()> &step);
    bool commitFrom(std::vector<LogFollower *>::const_iterator next, const LogEdit &edit,
                    const std::function<bool()> &step) REQUIRES(m_followersMutex);
    void tellReaders();
    void disarm(AppendWaker &waker) REQUIRES(m_readersMutex);
    [[nodiscard]] UniqueFd openFolder() const;
    void syncFolder() const;

    /// What was appended since the last sync.
    struct Dirty {
        std::vector<UniqueFd> retired;
        std::optional<UniqueFd> file;  ///< closed when there was no descriptor for it
        std::uint64_t events = 0;
        bool folderChanged = false;
    };
    void syncWhenDirty();
    Dirty takeDirty() REQUIRES(m_mutex);
    [[nodiscard]] int sync(const Dirty &dirty);
    bool syncOwnFolder();
    void giveBack(Dirty dirty) REQUIRES(m_mutex);
    void noteSync(const Dirty &dirty, int error);

    const std::filesystem::path m_folder;

    // Used by append() alone.
    std::int64_t m_nameSeconds = -1;
    std::string m_name;
    bool m_works = true;
    std::int64_t m_lastLoss = 0;
    std::uint64_t m_lost = 0;

    // Of the thread that syncs alone.
    bool m_syncWorks = true;
    std::uint64_t m_unsyncedNow = 0;  ///< since syncing last worked
    UniqueFd m_syncedFolder;          ///< stays open: later, there may be no descriptor for it

    std::atomic<std::uint64_t> m_unsynced = 0;
    std::atomic<std::uint64_t> m_edits = 0;
    std::atomic<std::uint64_t> m_fileChanges = 0;
    std::atomic<std::uint64_t> m_appends = 0;
    std::atomic<std::size_t> m_armedWakers = 0;  ///< changes under m_readersMutex

    Mutex m_readersMutex;
    std::vector<AppendWaker *> m_wakers GUARDED_BY(m_readersMutex);

    Mutex m_editMutex LOCKED_BEFORE(m_followersMutex);
    Mutex m_followersMutex LOCKED_BEFORE(m_mutex);
    std::vector<LogFollower *> m_followers GUARDED_BY(m_followersMutex);

    Mutex m_mutex;
    Condition m_wakeSync;
    UniqueFd m_file GUARDED_BY(m_mutex);         ///< open for appending
    std::string m_fileName GUARDED_BY(m_mutex);  ///< empty when there is none
    std::filesystem::path m_filePath GUARDED_BY(m_mutex);
    std::optional<FileIdentity> m_fileIdentity GUARDED_BY(m_mutex);
    FileMark m_fileMark GUARDED_BY(m_mutex);
    // Connections can take all others. While a file is begun, the one before waits for its sync.
    SpareDescriptors m_sparesForFile GUARDED_BY(m_mutex){2};
    SpareDescriptors m_spareForSync GUARDED_BY(m_mutex){1};
    bool m_folderChanged GUARDED_BY(m_mutex) = false;
    /// No longer appended to, not yet synced.
    std::vector<UniqueFd> m_retired GUARDED_BY(m_mutex);
    bool m_dirty GUARDED_BY(m_mutex) = false;
    std::uint64_t m_dirtyEvents GUARDED_BY(m_mutex) = 0;
    bool m_urgent GUARDED_BY(m_mutex) = false;
    bool m_stop GUARDED_BY(m_mutex) = false;

    std::thread m_syncThread;
};

}  // namespace quorbel
