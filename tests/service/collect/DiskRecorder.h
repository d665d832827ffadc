#pragma once

#include <sys/types.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace quorbel::testing {

/// What this program has made sure is on the disk: stands in front of the system's fdatasync(),
/// fsync() and rename(), and of the waits of condition variables. From any thread.
class DiskRecorder {
public:
    static DiskRecorder &instance();
    /// Forgets everything, and lets everything work.
    void reset();

    /// How much of the file of that name was synced at least; 0 for none.
    off_t synced(const std::filesystem::path &path);
    /// Whether nothing was renamed that was not synced to its end before, and every folder in which
    /// something was renamed was synced since; else what was not.
    std::vector<std::string> mistakes();
    /// The files that took another one's place.
    std::vector<std::string> replaced();

    /// Waits with a limit take an hour more: what then happens was asked for by somebody.
    std::atomic<bool> stretchWaits = false;
    /// How many waits with a limit have begun.
    std::atomic<int> waits = 0;
    /// So many of the next syncs fail with EIO.
    std::atomic<int> failures = 0;
    /// Called before a copy of a log file is synced, on the thread that does.
    std::function<void()> whileCopyIsSynced;

    // The system's, as they are called.
    int sync(int fd, long number);
    int rename(const char *from, const char *to);

private:
    std::mutex m_mutex;
    std::map<ino_t, off_t> m_synced;
    std::map<ino_t, std::string> m_unsyncedFolders;
    std::vector<std::string> m_mistakes;
    std::vector<std::string> m_replaced;
};

}  // namespace quorbel::testing
