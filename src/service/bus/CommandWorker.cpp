#include "service/bus/CommandWorker.h"

#include <sys/eventfd.h>

#include <utility>

namespace quorbel {

CommandWorker::CommandWorker(sd_event *loop, Commands &commands)
    : m_commands(commands),
      m_doneSignal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_doneSource(required(watchInput(loop, m_doneSignal.get(), replyToDone, this))),
      m_thread([this] { work(); }),
      m_finishThread([this] { finish(); }) {}

CommandWorker::~CommandWorker() {
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    m_wake.notifyOne();
    m_wakeFinish.notifyOne();
    m_thread.join();
    m_finishThread.join();
}

bool CommandWorker::submit(Command command, ReplyHandler onReply) {
    if (m_unanswered >= kMostWaiting && !std::holds_alternative<Commands::Reload>(command)) {
        return false;
    }
    {
        const MutexLock lock(m_mutex);
        m_waiting.push_back({std::move(command), std::move(onReply), {}, {}});
    }
    ++m_unanswered;
    m_wake.notifyOne();
    return true;
}

void CommandWorker::work() {
    MutexLock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this]() REQUIRES(m_mutex) { return m_stop || !m_waiting.empty(); });
        if (m_stop) {
            return;
        }
        // Other entries may come behind it meanwhile; only this thread takes any away.
        Job &job = m_waiting.front();
        lock.unlock();
        auto outcome = std::visit([this](const auto &command) { return m_commands.begin(command); },
                                  job.command);
        job.command = Dictionary();
        lock.lock();
        if (auto *rest = std::get_if<Commands::Rest>(&outcome)) {
            job.rest = std::move(*rest);
            m_unfinished.push_back(std::move(job));
            m_waiting.pop_front();
            m_wakeFinish.notifyOne();
        } else {
            job.reply = std::move(std::get<std::string>(outcome));
            endJob(m_waiting);
        }
    }
}

void CommandWorker::finish() {
    MutexLock lock(m_mutex);
    for (;;) {
        m_wakeFinish.wait(lock,
                          [this]() REQUIRES(m_mutex) { return m_stop || !m_unfinished.empty(); });
        if (m_stop) {
            return;
        }
        Job &job = m_unfinished.front();
        lock.unlock();
        job.reply = job.rest();
        lock.lock();
        endJob(m_unfinished);
    }
}

/// The first of these jobs is done.
void CommandWorker::endJob(std::deque<Job> &jobs) {
    m_done.push_back(std::move(jobs.front()));
    jobs.pop_front();
    eventfd_write(m_doneSignal.get(), 1);
}

int CommandWorker::replyToDone(sd_event_source * /*source*/, int fd, std::uint32_t /*events*/,
                               void *self) {
    auto *worker = static_cast<CommandWorker *>(self);
    eventfd_t count = 0;
    eventfd_read(fd, &count);
    std::deque<Job> done;
    {
        const MutexLock lock(worker->m_mutex);
        done = std::exchange(worker->m_done, {});
    }
    for (const Job &job : done) {
        job.onReply(job.reply);
        --worker->m_unanswered;
    }
    return 0;
}

}  // namespace quorbel
