#include "service/actions/CommandRunner.h"

#include "service/base/Journal.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

using Clock = std::chrono::steady_clock;

void sayOf(const CommandRunner::Command &command, JournalLevel level, std::string_view text) {
    say(level, "Action \"" + command.action + "\": " + std::string(text));
}

void noteFailed(const CommandRunner::Command &command, std::string_view text) {
    if (command.result) {
        command.result->noteFailed(text);
    }
}

/// In the journal as well.
void failed(const CommandRunner::Command &command, JournalLevel level, std::string_view text) {
    sayOf(command, level, text);
    noteFailed(command, text);
}

int millisecondsUntil(Clock::time_point time) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 3'600'000));
}

}  // namespace

/// Follows one command from its start to its end.
class CommandRunner::Watch {
public:
    Watch(const Command &command, const ChildProcess &child, const Limits &limits, int stopSignal)
        : m_command(command),
          m_child(child),
          m_limits(limits),
          m_stopSignal(stopSignal),
          m_output(child.output.get()),
          m_deadline(Clock::now() + limits.run) {}

    /// False when the command could not be stopped; it is not waited for then.
    bool follow() {
        while (!m_gaveUp && !hasEnded()) {
            if (Clock::now() >= m_deadline) {
                endIt();
            }
        }
        readOutput();
        sayOutput();
        if (m_gaveUp) {
            failed(m_command, JournalLevel::kError, "the command could not be stopped");
            return false;
        }
        if (m_stage != Stage::kRuns) {
            // Also those of its group that outlived it. Nobody can have its number yet.
            m_child.signal(SIGKILL);
        }
        sayStatus(m_child.wait());
        return true;
    }

private:
    enum class Stage { kRuns, kTerminated, kKilled };

    /// Waits for something to happen, at most until the deadline.
    bool hasEnded() {
        std::array<pollfd, 3> sources{pollfd{m_child.handle.get(), POLLIN, 0},
                                      pollfd{m_output, POLLIN, 0}, pollfd{m_stopSignal, POLLIN, 0}};
        if (::poll(sources.data(), sources.size(), millisecondsUntil(m_deadline)) <= 0) {
            return false;
        }
        if (sources[1].revents != 0) {
            readOutput();
        }
        if (sources[2].revents != 0) {
            m_stopSignal = -1;
            m_deadline = std::min(m_deadline, Clock::now() + m_limits.stop);
        }
        return sources[0].revents != 0;
    }

    void endIt() {
        m_gaveUp = m_stage == Stage::kKilled;
        const bool first = m_stage == Stage::kRuns;
        m_endedForStop = first ? m_stopSignal < 0 : m_endedForStop;
        m_child.signal(first ? SIGTERM : SIGKILL);
        m_stage = first ? Stage::kTerminated : Stage::kKilled;
        m_deadline = Clock::now() + m_limits.end;
    }

    void readOutput() {
        std::array<char, 4096> bytes{};
        ssize_t count = 0;
        // One that never stops writing is not to be read for ever.
        for (int i = 0; i < 16 && m_output >= 0; ++i) {
            count = ::read(m_output, bytes.data(), bytes.size());
            if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
                m_output = -1;
            }
            if (count <= 0) {
                return;
            }
            const auto length = static_cast<std::size_t>(count);
            const std::size_t room = kMostOutput - m_text.size();
            m_text.append(bytes.data(), std::min(length, room));
            m_cut = m_cut || length > room;
        }
    }

    void sayOutput() {
        std::ranges::replace_if(
            m_text, [](char c) { return c != '\n' && static_cast<unsigned char>(c) < ' '; }, ' ');
        std::string_view rest = m_text;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            if (end > 0) {
                sayOf(m_command, JournalLevel::kInformation, rest.substr(0, end));
            }
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        if (m_cut) {
            sayOf(m_command, JournalLevel::kInformation,
                  "the rest of the command's output is left out");
        }
    }

    void sayStatus(int status) {
        if (m_stage != Stage::kRuns) {
            failed(m_command, JournalLevel::kWarning,
                   m_endedForStop ? "the command was stopped because the service is stopping"
                                  : "the command took too long and was stopped");
        } else if (WIFSIGNALED(status)) {
            failed(m_command, JournalLevel::kWarning,
                   "the command was killed by signal " + std::to_string(WTERMSIG(status)));
        } else if (WEXITSTATUS(status) != 0) {
            failed(m_command, JournalLevel::kWarning,
                   "the command ended with status " + std::to_string(WEXITSTATUS(status)));
        }
    }

    const Command &m_command;
    const ChildProcess &m_child;
    const Limits &m_limits;
    int m_stopSignal;  ///< -1 once it came
    int m_output;      ///< -1 once it has ended
    Clock::time_point m_deadline;
    Stage m_stage = Stage::kRuns;
    bool m_endedForStop = false;
    bool m_gaveUp = false;  ///< not even killed it ends
    std::string m_text;
    bool m_cut = false;
};

CommandRunner::CommandRunner(Limits limits)
    : m_limits(limits), m_stopSignal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void CommandRunner::stop() {
    std::size_t givenUp = 0;
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
        givenUp = m_waiting.size();
        m_waiting.clear();
    }
    m_notStarted += givenUp;
    if (givenUp > 0) {
        say(JournalLevel::kWarning,
            "The service is stopping; commands of actions that were not run: " +
                std::to_string(givenUp));
    }
    eventfd_write(m_stopSignal.get(), 1);
    m_wake.notifyAll();
    for (std::thread &thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
    reapUnended();
}

bool CommandRunner::submit(Command command) {
    const MutexLock lock(m_mutex);
    startThreads();
    if (m_stop || m_waiting.size() >= kMostWaiting || m_threads.empty()) {
        ++m_notStarted;
        noteFailed(command, "Too many commands are waiting");
        return false;
    }
    m_waiting.push_back(std::move(command));
    m_wake.notifyOne();
    return true;
}

void CommandRunner::startThreads() {
    try {
        while (!m_stop && m_threads.size() < kMostAtOnce) {
            m_threads.emplace_back([this] { work(); });
        }
    } catch (const std::system_error &error) {
        say(JournalLevel::kError,
            std::string("Not enough threads for the commands of actions: ") + error.what());
    }
}

void CommandRunner::work() {
    MutexLock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this]() REQUIRES(m_mutex) { return m_stop || !m_waiting.empty(); });
        if (m_stop) {
            return;
        }
        const Command command = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        run(command);
        lock.lock();
    }
}

void CommandRunner::run(const Command &command) {
    reapUnended();
    auto child = ChildProcess::start(command.program, command.arguments, command.environment);
    if (!child) {
        ++m_notStarted;
        failed(command, JournalLevel::kWarning,
               command.program + " cannot be run: " + std::generic_category().message(errno));
        return;
    }
    ++m_started;
    if (!Watch(command, *child, m_limits, m_stopSignal.get()).follow()) {
        const MutexLock lock(m_mutex);
        m_unended.push_back(std::move(*child));
    }
}

/// Something in the kernel kept them; nothing is to be left of them when it lets them go.
void CommandRunner::reapUnended() {
    const MutexLock lock(m_mutex);
    std::erase_if(m_unended, [](const ChildProcess &child) { return child.tryReap(); });
}

}  // namespace quorbel
