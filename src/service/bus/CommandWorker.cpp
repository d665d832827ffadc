#include "service/bus/CommandWorker.h"

#include <sys/eventfd.h>

#include <utility>

namespace quorbel {

CommandWorker::CommandWorker(sd_event *loop, Commands &commands)
    : m_commands(commands),
      m_doneSignal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_doneSource(required(watchInput(loop, m_doneSignal.get(), replyToDone, this))),
      m_thread([this] { work(); }) {}

CommandWorker::~CommandWorker() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

bool CommandWorker::submit(Command command, ReplyHandler onReply) {
    if (m_unanswered >= kMostWaiting) {
        return false;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back({std::move(command), std::move(onReply), {}});
    }
    ++m_unanswered;
    m_wake.notify_one();
    return true;
}

void CommandWorker::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stop || !m_waiting.empty(); });
        if (m_stop) {
            return;
        }
        // Other entries may come behind it meanwhile; only this thread takes any away.
        Job &job = m_waiting.front();
        lock.unlock();
        job.reply = std::visit([this](const auto &command) { return m_commands.carryOut(command); },
                               job.command);
        job.command = Dictionary();
        lock.lock();
        m_done.push_back(std::move(job));
        m_waiting.pop_front();
        eventfd_write(m_doneSignal.get(), 1);
    }
}

int CommandWorker::replyToDone(sd_event_source * /*source*/, int fd, std::uint32_t /*events*/,
                               void *self) {
    auto *worker = static_cast<CommandWorker *>(self);
    eventfd_t count = 0;
    eventfd_read(fd, &count);
    std::deque<Job> done;
    {
        const std::lock_guard lock(worker->m_mutex);
        done = std::exchange(worker->m_done, {});
    }
    for (const Job &job : done) {
        job.onReply(job.reply);
        --worker->m_unanswered;
    }
    return 0;
}

}  // namespace quorbel
