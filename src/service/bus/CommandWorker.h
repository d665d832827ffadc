#pragma once

#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "platform/Value.h"
#include "service/base/SdEvent.h"
#include "service/bus/Commands.h"

#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <variant>

namespace quorbel {

/// Carries out commands one after the other, in the order in which they came, on a thread of its
/// own, so that receiving and storing go on meanwhile. What a command leaves to be done in its own
/// time is done on another thread, in the same order: a mail server that does not answer keeps no
/// settings from being saved. All operations are for the loop's thread.
class CommandWorker {
public:
    /// A command, or the memfd that holds it.
    using Command = std::variant<Dictionary, UniqueFd, Commands::Reload>;
    /// Called on the loop's thread once the command was carried out.
    using ReplyHandler = std::function<void(const std::string &reply)>;

    static constexpr std::size_t kMostWaiting = 64;

    /// Of `commands`, stop() alone may be called by others; it must outlive the object.
    CommandWorker(sd_event *loop, Commands &commands);
    /// Waits for the commands that are being carried out; those that wait are given up.
    ~CommandWorker();
    CommandWorker(const CommandWorker &) = delete;
    CommandWorker &operator=(const CommandWorker &) = delete;

    /// False when too many commands of clients are waiting already.
    bool submit(Command command, ReplyHandler onReply);
    /// Whether every command was carried out and replied to.
    [[nodiscard]] bool isIdle() const { return m_unanswered == 0; }

private:
    struct Job {
        Command command;
        ReplyHandler onReply;
        std::string reply;
        Commands::Rest rest;
    };

    void work();
    void finish();
    void endJob(std::deque<Job> &jobs) REQUIRES(m_mutex);
    static int replyToDone(sd_event_source *source, int fd, std::uint32_t events, void *self);

    Commands &m_commands;
    std::size_t m_unanswered = 0;
    UniqueFd m_doneSignal;  ///< an eventfd
    EventSourcePointer m_doneSource;

    Mutex m_mutex;
    Condition m_wake;
    Condition m_wakeFinish;
    // A job's reply handler is called and destroyed on the loop's thread only.
    std::deque<Job> m_waiting GUARDED_BY(m_mutex);
    std::deque<Job> m_unfinished GUARDED_BY(m_mutex);  ///< begun, with a rest
    std::deque<Job> m_done GUARDED_BY(m_mutex);
    bool m_stop GUARDED_BY(m_mutex) = false;

    std::thread m_thread;
    std::thread m_finishThread;
};

}  // namespace quorbel
