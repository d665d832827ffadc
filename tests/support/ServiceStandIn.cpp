#include "support/ServiceStandIn.h"

#include "platform/KeyedArchive.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/BusValue.h"
#include "platform/bus/SdBus.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <variant>

namespace quorbel::testing {

using bus::BusPointer;
using bus::Clock;
using bus::MessagePointer;

namespace {

constexpr std::size_t kFlushInterval = 1000;

BusPointer connectWithName() {
    BusPointer connection = bus::openSystemBus();
    const bool owned = connection != nullptr && waitUntil([&connection] {
                           return sd_bus_request_name(connection.get(), bus::kServiceName, 0) >= 0;
                       });
    if (!owned) {
        throw std::runtime_error("the stand-in cannot own its name");
    }
    return connection;
}

MessagePointer newNotification(sd_bus *connection) {
    sd_bus_message *message = nullptr;
    if (sd_bus_message_new_signal(connection, &message, bus::kServicePath,
                                  bus::kNotificationInterface, bus::kNotification) < 0) {
        throw std::runtime_error("no signal");
    }
    return MessagePointer(message);
}

void require(int result) {
    if (result < 0) {
        throw std::runtime_error("the stand-in cannot send: " + std::to_string(result));
    }
}

void post(sd_bus *connection, const ServiceStandIn::UserInfo &userInfo) {
    const MessagePointer message = newNotification(connection);
    require(sd_bus_message_open_container(message.get(), 'a', "{ss}"));
    for (const auto &[key, value] : userInfo) {
        require(sd_bus_message_append(message.get(), "{ss}", key.c_str(), value.c_str()));
    }
    require(sd_bus_message_close_container(message.get()));
    require(sd_bus_send(connection, message.get(), nullptr));
}

std::string wholeFile(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0) {
        return {};
    }
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t got = pread(file, bytes.data(), bytes.size(), 0);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    return bytes;
}

std::optional<Dictionary> commandInFile(int file) {
    const auto archive = readKeyedArchive(wholeFile(file));
    const Value *root = std::get_if<Value>(&archive);
    const Dictionary *command = root == nullptr ? nullptr : root->dictionary();
    return command == nullptr ? std::nullopt : std::optional(*command);
}

std::optional<ServiceStandIn::Received> readCommand(sd_bus_message *message) {
    ServiceStandIn::Received received;
    received.sender = sd_bus_message_get_sender(message);
    std::optional<Dictionary> command;
    if (sd_bus_message_is_method_call(message, bus::kCommandInterface, bus::kSetCommand) > 0) {
        command = readFromMessage(message);
    } else if (sd_bus_message_is_method_call(message, bus::kCommandInterface,
                                             bus::kSetCommandFile) > 0) {
        int file = -1;
        if (sd_bus_message_read(message, "h", &file) > 0) {
            command = commandInFile(file);
            received.seals = fcntl(file, F_GET_SEALS);
        }
        received.asFile = true;
    }
    if (!command) {
        return std::nullopt;
    }
    received.command = std::move(*command);
    return received;
}

}  // namespace

struct ServiceStandIn::Impl {
    struct PendingReply {
        Clock::time_point due;
        MessagePointer call;
        std::string reply;
    };

    BusPointer connection = connectWithName();
    int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    OnCommand reaction = OnCommand::kReply;
    std::chrono::milliseconds delay{0};
    std::string reply = "OK";
    std::vector<Received> received;
    std::deque<std::function<void(sd_bus *)>> tasks;
    bool stopping = false;

    std::deque<PendingReply> replies;  // the thread's own
    std::thread thread;

    Impl() {
        sd_bus_add_object(connection.get(), nullptr, bus::kServicePath, &Impl::onMessage, this);
        thread = std::thread([this] { serve(); });
    }

    ~Impl() {
        {
            const std::scoped_lock lock(mutex);
            stopping = true;
        }
        eventfd_write(wake, 1);
        thread.join();
        close(wake);
    }

    Impl(const Impl &) = delete;
    Impl &operator=(const Impl &) = delete;

    static int onMessage(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        return static_cast<Impl *>(self)->take(message);
    }

    int take(sd_bus_message *message) {
        if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", nullptr) >
            0) {
            return 0;  // for whoever has added some
        }
        std::optional<Received> command = readCommand(message);
        if (!command) {
            return -EBADMSG;
        }
        const std::scoped_lock lock(mutex);
        received.push_back(std::move(*command));
        changed.notify_all();
        switch (reaction) {
            case OnCommand::kReply:
                replies.push_back(
                    {Clock::now() + delay, MessagePointer(sd_bus_message_ref(message)), reply});
                return 1;
            case OnCommand::kReplyWithError:
                return -EACCES;
            case OnCommand::kKeepSilent:
                return 1;
            case OnCommand::kDie:
                sd_bus_close(connection.get());
                return 1;
        }
        return 1;
    }

    void sendDueReplies() {
        while (!replies.empty() && replies.front().due <= Clock::now()) {
            sd_bus_reply_method_return(replies.front().call.get(), "s",
                                       replies.front().reply.c_str());
            replies.pop_front();
        }
    }

    // False when the thread is to end.
    bool runTasks() {
        while (true) {
            std::function<void(sd_bus *)> task;
            {
                const std::scoped_lock lock(mutex);
                if (tasks.empty()) {
                    return !stopping;
                }
                task = std::move(tasks.front());
                tasks.pop_front();
            }
            task(connection.get());
        }
    }

    void waitForInput() {
        const int descriptor = sd_bus_get_fd(connection.get());
        const int events = sd_bus_get_events(connection.get());
        pollfd inputs[] = {{wake, POLLIN, 0}, {descriptor, static_cast<short>(events), 0}};
        std::optional<Clock::time_point> until = bus::processingTime(connection.get());
        if (!replies.empty()) {
            until = std::min(until.value_or(replies.front().due), replies.front().due);
        }
        const int timeout = until ? static_cast<int>(bus::remaining(*until).count()) : -1;
        poll(inputs, descriptor < 0 ? 1 : 2, timeout);
        eventfd_t ignored = 0;
        eventfd_read(wake, &ignored);
    }

    void serve() {
        while (runTasks()) {
            sendDueReplies();
            if (sd_bus_process(connection.get(), nullptr) <= 0) {
                waitForInput();
            }
        }
        replies.clear();
        sd_bus_release_name(connection.get(), bus::kServiceName);
        connection.reset();
    }
};

ServiceStandIn::ServiceStandIn() : m_impl(std::make_unique<Impl>()) {}

ServiceStandIn::~ServiceStandIn() = default;

void ServiceStandIn::onCommand(OnCommand reaction, std::chrono::milliseconds delay) {
    const std::scoped_lock lock(m_impl->mutex);
    m_impl->reaction = reaction;
    m_impl->delay = delay;
}

void ServiceStandIn::setReply(std::string reply) {
    const std::scoped_lock lock(m_impl->mutex);
    m_impl->reply = std::move(reply);
}

void ServiceStandIn::replyNow() {
    run([this](sd_bus * /*connection*/) {
        for (Impl::PendingReply &pending : m_impl->replies) {
            pending.due = Clock::now();
        }
    });
}

std::vector<ServiceStandIn::Received> ServiceStandIn::received() const {
    const std::scoped_lock lock(m_impl->mutex);
    return m_impl->received;
}

std::vector<Dictionary> ServiceStandIn::waitForCommands(std::size_t count,
                                                        std::chrono::milliseconds limit) const {
    std::unique_lock lock(m_impl->mutex);
    m_impl->changed.wait_for(lock, limit,
                             [this, count] { return m_impl->received.size() >= count; });
    std::vector<Dictionary> commands;
    for (const Received &received : m_impl->received) {
        commands.push_back(received.command);
    }
    return commands;
}

void ServiceStandIn::clear() {
    const std::scoped_lock lock(m_impl->mutex);
    m_impl->received.clear();
}

void ServiceStandIn::run(std::function<void(sd_bus *)> task) {
    bool done = false;
    std::exception_ptr failure;
    std::unique_lock lock(m_impl->mutex);
    m_impl->tasks.emplace_back([&](sd_bus *connection) {
        std::exception_ptr caught;
        try {
            task(connection);
            require(sd_bus_flush(connection));
        } catch (const std::exception &) {
            caught = std::current_exception();
        }
        const std::scoped_lock finished(m_impl->mutex);
        failure = caught;
        done = true;
        m_impl->changed.notify_all();
    });
    eventfd_write(m_impl->wake, 1);
    m_impl->changed.wait(lock, [&done] { return done; });
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void ServiceStandIn::notify(const UserInfo &userInfo) {
    run([&userInfo](sd_bus *connection) { post(connection, userInfo); });
}

void ServiceStandIn::notifyMany(std::size_t count,
                                const std::function<UserInfo(std::size_t)> &userInfo) {
    run([count, &userInfo](sd_bus *connection) {
        for (std::size_t number = 0; number < count; ++number) {
            post(connection, userInfo(number));
            // What the bus has not taken yet queues up in the connection, which has its limit.
            if (number % kFlushInterval == 0) {
                require(sd_bus_flush(connection));
            }
        }
    });
}

void ServiceStandIn::notifyVariants(const Dictionary &userInfo) {
    run([&userInfo](sd_bus *connection) {
        const MessagePointer message = newNotification(connection);
        require(appendToMessage(message.get(), userInfo));
        require(sd_bus_send(connection, message.get(), nullptr));
    });
}

void ServiceStandIn::notifyText(const std::string &text) {
    run([&text](sd_bus *connection) {
        const MessagePointer message = newNotification(connection);
        require(sd_bus_message_append(message.get(), "s", text.c_str()));
        require(sd_bus_send(connection, message.get(), nullptr));
    });
}

}  // namespace quorbel::testing
