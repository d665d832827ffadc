#include "platform/bus/CommandSender.h"

#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "platform/bus/CommandDelivery.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel {

using bus::Clock;
using bus::CommandDelivery;

namespace {

// How long the end waits for a bus that takes no command at all.
constexpr std::chrono::seconds kEndLimit{5};

// A service that never answers must not use up the connections that a bus allows one user.
constexpr std::size_t kConnectionLimit = 64;

}  // namespace

struct CommandSender::Impl {
    struct Waiting {
        CommandDelivery::Command command;
        AnswerHandler onAnswer;
    };

    ReplyHandler onReply;
    UniqueFd wake;

    Mutex mutex;
    Condition becameIdle;
    std::deque<Waiting> queue GUARDED_BY(mutex);
    std::size_t unfinished GUARDED_BY(mutex) = 0;  // in the queue or on their way
    bool ending GUARDED_BY(mutex) = false;

    std::deque<std::unique_ptr<CommandDelivery>> deliveries;  // the thread's own, oldest first
    std::size_t started = 0;                                  // the thread's own, too
    std::thread thread;

    explicit Impl(ReplyHandler handler)
        : onReply(std::move(handler)), wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (!wake.isOpen()) {
            throw std::system_error(errno, std::generic_category(), "eventfd");
        }
        thread = std::thread([this] { work(); });
    }

    ~Impl() {
        {
            const MutexLock lock(mutex);
            ending = true;
        }
        eventfd_write(wake.get(), 1);
        thread.join();
    }

    Impl(const Impl &) = delete;
    Impl &operator=(const Impl &) = delete;

    void send(Waiting waiting) {
        {
            const MutexLock lock(mutex);
            queue.push_back(std::move(waiting));
            ++unfinished;
        }
        eventfd_write(wake.get(), 1);
    }

    void work() {
        std::optional<Clock::time_point> end;
        while (true) {
            // Asked first: what was handed over before the end began is then in the queue.
            const bool last = isEnding();
            const std::size_t startedBefore = started;
            const bool allSent = startDeliveries();
            if (last) {
                // Each command that the bus has taken shows that the next one is not waited for in
                // vain.
                end = end && started == startedBefore ? *end : Clock::now() + kEndLimit;
                if ((allSent && !awaitsStart()) || Clock::now() >= *end) {
                    break;
                }
            }
            waitForInput(end);
            const auto begin = Clock::now();
            for (const auto &delivery : deliveries) {
                delivery->process();
            }
            dropFinished();
            if (end) {
                // Encoding a large command is no waiting.
                *end += Clock::now() - begin;
            }
        }
        deliveries.clear();
    }

    bool isEnding() {
        const MutexLock lock(mutex);
        return ending;
    }

    std::optional<Waiting> nextCommand() {
        const MutexLock lock(mutex);
        if (queue.empty()) {
            return std::nullopt;
        }
        std::optional<Waiting> next = std::move(queue.front());
        queue.pop_front();
        return next;
    }

    // Whether nothing is left to send.
    bool startDeliveries() {
        while (deliveries.empty() || !deliveries.back()->holdsUpNext()) {
            std::optional<Waiting> next = nextCommand();
            if (!next) {
                return true;
            }
            deliveries.push_back(std::make_unique<CommandDelivery>(
                std::move(next->command), onReply, std::move(next->onAnswer)));
            ++started;
            dropFinished();
            if (deliveries.size() > kConnectionLimit) {
                deliveries.pop_front();
                settle(1);
            }
        }
        return false;
    }

    [[nodiscard]] bool awaitsStart() const {
        return std::ranges::any_of(deliveries,
                                   [](const auto &delivery) { return delivery->awaitsStart(); });
    }

    void dropFinished() {
        settle(
            std::erase_if(deliveries, [](const auto &delivery) { return delivery->isFinished(); }));
    }

    void settle(std::size_t count) {
        const MutexLock lock(mutex);
        unfinished -= count;
        if (unfinished == 0) {
            becameIdle.notifyAll();
        }
    }

    void waitForInput(std::optional<Clock::time_point> end) const {
        std::vector<pollfd> inputs{{wake.get(), POLLIN, 0}};
        Clock::time_point until = end.value_or(Clock::time_point::max());
        for (const auto &delivery : deliveries) {
            inputs.push_back(delivery->input());
            until = std::min(until, delivery->nextTime());
        }
        const bool limited = until != Clock::time_point::max();
        poll(inputs.data(), inputs.size(),
             limited ? static_cast<int>(bus::remaining(until).count()) : -1);
        eventfd_t ignored = 0;
        eventfd_read(wake.get(), &ignored);
    }
};

CommandSender::CommandSender(ReplyHandler onReply)
    : m_impl(std::make_unique<Impl>(std::move(onReply))) {}

CommandSender::~CommandSender() = default;

void CommandSender::send(Dictionary command, AnswerHandler onAnswer) {
    m_impl->send({Value(std::move(command)), std::move(onAnswer)});
}

void CommandSender::send(LineCommand command, AnswerHandler onAnswer) {
    if (command.textSize() <= bus::kMessageLimit) {
        send(command.toDictionary(), std::move(onAnswer));
    } else {
        m_impl->send({std::move(command), std::move(onAnswer)});
    }
}

bool CommandSender::waitUntilIdle(std::chrono::milliseconds limit) {
    MutexLock lock(m_impl->mutex);
    return m_impl->becameIdle.waitFor(
        lock, limit, [this]() REQUIRES(m_impl->mutex) { return m_impl->unfinished == 0; });
}

}  // namespace quorbel
