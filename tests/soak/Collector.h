#pragma once

#include "soak/EventComparison.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::soak {

/// The real service with what is around it, and what goes wrong there: it is killed, stopped and
/// started again, the bus goes and comes back, its disk gets full. All of it on a thread of its
/// own, so that nobody else waits. Functions are for any thread.
class Collector {
public:
    struct Place {
        std::filesystem::path library;  ///< its folder
        std::filesystem::path filler;   ///< on the same small disk; empty: the disk is not filled
    };

    /// Returns when the service listens. The bus outlives it.
    Collector(testing::PrivateBus &bus, Place place, unsigned seed,
              std::chrono::milliseconds between);
    ~Collector();
    Collector(const Collector &) = delete;
    Collector &operator=(const Collector &) = delete;

    /// The same in all its lives.
    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] pid_t pid() const { return m_pid; }

    /// Whether something may go wrong, about as often as was said at first; no at first. What is
    /// wrong just now comes right all the same.
    void setFaults(bool on);
    /// Lets nothing go wrong for a while, as setFaults() does, whatever that has said.
    void holdFaults(bool hold);
    /// Whether everything is as it should be, for as long as there are no faults.
    [[nodiscard]] bool isWell() const;
    /// Stops the service and starts it again, soon: until then it is not well.
    void restart();

    /// What went wrong so far, one word each with how often.
    [[nodiscard]] std::string told() const;
    /// What was wrong that should not have been: the service's own failures. Empty when all is
    /// well.
    [[nodiscard]] std::vector<std::string> failures() const;
    /// When its disk was full. What arrived then may be listed without being in the log: the window
    /// is told also of what could not be stored.
    [[nodiscard]] std::vector<TimeSpan> fullTimes() const;
    /// How much of that there was in all of its lives that are over.
    [[nodiscard]] std::uint64_t notStored() const;
    /// What the service that was stopped last has written; empty when none was yet.
    [[nodiscard]] std::string lastJournal() const;

private:
    enum Fault { kKill, kStop, kBus, kDisk, kRestart, kFaultCount };

    /// Under m_mutex.
    [[nodiscard]] bool mayFail() const { return m_hasFaults && !m_isHeld; }
    void work();
    void start();
    void stop();
    Fault anyFault();
    void take(Fault fault);
    void stopBus();
    [[nodiscard]] std::size_t timesOnBus() const;
    void fillDisk();
    void checkBalance(const std::string &journal);
    void fail(const std::string &what);
    void sleepUpTo(std::chrono::milliseconds longest);

    testing::PrivateBus &m_bus;
    const Place m_place;
    const std::chrono::milliseconds m_between;
    // Of the thread.
    int m_faults = 0;
    bool m_hasLost = false;  ///< something that is known only when the service says so in the end
    std::mt19937 m_random;
    std::unique_ptr<testing::ServiceProcess> m_service;
    std::atomic<std::uint16_t> m_port = 0;
    std::atomic<pid_t> m_pid = -1;

    mutable std::mutex m_mutex;  // of all that follows
    std::condition_variable m_changed;
    bool m_isStopping = false;
    bool m_hasFaults = false;
    bool m_isHeld = false;
    bool m_isWell = false;
    bool m_isToRestart = false;
    std::string m_journal;
    std::vector<TimeSpan> m_fullTimes;
    std::uint64_t m_notStored = 0;
    std::vector<unsigned> m_taken = std::vector<unsigned>(kFaultCount);
    std::vector<std::string> m_failures;

    std::thread m_thread;
};

}  // namespace quorbel::soak
