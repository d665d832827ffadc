#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <thread>

namespace quorbel::bench {

/// The most memory that this process takes at a time, while the object lives, above what it had at
/// first: what is resident, and the files in memory that it has open.
class MemoryWatch {
public:
    MemoryWatch();
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch &) = delete;
    MemoryWatch &operator=(const MemoryWatch &) = delete;

    /// In MiB.
    [[nodiscard]] double grown() const;
    /// The largest file in memory that was seen, in MiB.
    [[nodiscard]] double largestFile() const;

private:
    void look();

    std::size_t m_before;
    std::atomic<std::size_t> m_most;
    std::atomic<std::size_t> m_largestFile = 0;
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};

/// The largest resident memory that another process has had, or what it has now, in MiB.
double peakResident(pid_t process);
double resident(pid_t process);
/// From now on the peak is what the process has now or later.
void forgetPeak(pid_t process);

}  // namespace quorbel::bench
