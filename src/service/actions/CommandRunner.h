#pragma once

#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "service/actions/ChildProcess.h"
#include "service/actions/CommandLine.h"
#include "service/base/LastResult.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {

/// Runs the commands of actions, a few at a time, on threads of its own. What a command writes goes
/// to the journal up to some length, as does how it ended if not well. All operations are for one
/// thread.
class CommandRunner {
public:
    struct Command {
        std::string action;  ///< its name, for the journal
        std::string program;
        std::vector<std::string> arguments;
        Environment environment;
        std::shared_ptr<LastResult> result{};  ///< told of what goes wrong; may be null
    };

    struct Limits {
        std::chrono::milliseconds run{60'000};  ///< then the command's process group gets SIGTERM
        std::chrono::milliseconds end{5'000};   ///< then SIGKILL
        std::chrono::milliseconds stop{2'000};  ///< how long it still has when the service ends
    };

    static constexpr std::size_t kMostAtOnce = 4;
    static constexpr std::size_t kMostWaiting = 256;
    static constexpr std::size_t kMostOutput = 4096;

    CommandRunner() : CommandRunner(Limits()) {}
    explicit CommandRunner(Limits limits);
    ~CommandRunner() { stop(); }
    CommandRunner(const CommandRunner &) = delete;
    CommandRunner &operator=(const CommandRunner &) = delete;

    /// Returns at once; false when too many commands are waiting already, counted as dropped.
    bool submit(Command command);

    /// Ends what runs, after a while by force, and gives up what waits. Nothing is taken any more.
    void stop();

    /// How many were started, and how many were not: dropped, given up, or impossible to run.
    [[nodiscard]] std::uint64_t started() const { return m_started; }
    [[nodiscard]] std::uint64_t notStarted() const { return m_notStarted; }

private:
    class Watch;

    void startThreads() REQUIRES(m_mutex);
    void work();
    void run(const Command &command);
    void reapUnended();

    const Limits m_limits;
    const UniqueFd m_stopSignal;  ///< an eventfd: readable once everything is to end
    std::atomic<std::uint64_t> m_started = 0;
    std::atomic<std::uint64_t> m_notStarted = 0;

    Mutex m_mutex;
    Condition m_wake;
    std::deque<Command> m_waiting GUARDED_BY(m_mutex);
    /// Killed, and still there after a while.
    std::vector<ChildProcess> m_unended GUARDED_BY(m_mutex);
    bool m_stop GUARDED_BY(m_mutex) = false;

    std::vector<std::thread> m_threads;
};

}  // namespace quorbel
