#pragma once

#include "platform/Value.h"
#include "service/SdEvent.h"
#include "service/UniqueFd.h"
#include "service/bus/Commands.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <variant>

namespace quorbel {

/// Carries out commands one after the other, in the order in which they came, on a thread of its
/// own, so that receiving and storing go on meanwhile. All operations are for the loop's thread.
class CommandWorker {
public:
    /// A command, or the memfd that holds it.
    using Command = std::variant<Dictionary, UniqueFd>;
    /// Called on the loop's thread once the command was carried out.
    using ReplyHandler = std::function<void(const std::string &reply)>;

    static constexpr std::size_t kMostWaiting = 64;

    /// `commands` is used by the worker's thread alone and must outlive the object.
    CommandWorker(sd_event *loop, Commands &commands);
    /// Waits for the command that is being carried out; those that wait are given up.
    ~CommandWorker();
    CommandWorker(const CommandWorker &) = delete;
    CommandWorker &operator=(const CommandWorker &) = delete;

    /// False when too many commands are waiting already.
    bool submit(Command command, ReplyHandler onReply);
    /// Whether every command was carried out and replied to.
    [[nodiscard]] bool isIdle() const { return m_unanswered == 0; }

private:
    struct Job {
        Command command;
        ReplyHandler onReply;
        std::string reply;
    };

    void work();
    static int replyToDone(sd_event_source *source, int fd, std::uint32_t events, void *self);

    Commands &m_commands;
    std::size_t m_unanswered = 0;
    UniqueFd m_doneSignal;  ///< an eventfd
    EventSourcePointer m_doneSource;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    // Under m_mutex. A job's reply handler is called and destroyed on the loop's thread only.
    std::deque<Job> m_waiting;
    std::deque<Job> m_done;
    bool m_stop = false;

    std::thread m_thread;
};

}  // namespace quorbel
