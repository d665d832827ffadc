#include "platform/bus/NotificationObserver.h"

#include "platform/bus/BusNames.h"
#include "platform/bus/NotificationInfo.h"
#include "platform/bus/SdBus.h"

#include <poll.h>

#include <algorithm>
#include <string>
#include <utility>

namespace quorbel {

using bus::BusPointer;
using bus::Clock;

namespace {

constexpr std::chrono::seconds kRetryInterval{1};
constexpr std::chrono::milliseconds kWaitInterval{1};
constexpr std::chrono::seconds kConnectLimit{10};

constexpr const char *kBusName = "org.freedesktop.DBus";
constexpr const char *kBusPath = "/org/freedesktop/DBus";

std::string notificationRule() {
    return std::string("type='signal',sender='") + bus::kServiceName + "',path='" +
           bus::kServicePath + "',interface='" + bus::kNotificationInterface + "',member='" +
           bus::kNotification + "'";
}

std::string ownerRule() {
    return std::string("type='signal',sender='") + kBusName + "',path='" + kBusPath +
           "',interface='" + kBusName + "',member='NameOwnerChanged',arg0='" + bus::kServiceName +
           "'";
}

bool isFrom(sd_bus_message *message, std::string_view sender) {
    const char *actual = sd_bus_message_get_sender(message);
    return actual != nullptr && actual == sender;
}

bool readRuns(sd_bus_message *message, std::vector<NotificationBatch::Extent> &runs) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(st)") <= 0) {
        return false;
    }
    const char *type = nullptr;
    std::uint64_t bytes = 0;
    while (sd_bus_message_read(message, "(st)", &type, &bytes) > 0) {
        runs.push_back({type, bytes});
    }
    return sd_bus_message_exit_container(message) >= 0;
}

// Whether nobody has answered in time.
bool isTooLate(sd_bus_message *reply) {
    return sd_bus_message_is_method_error(reply, SD_BUS_ERROR_TIMEOUT) > 0 ||
           sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NO_REPLY) > 0;
}

}  // namespace

struct NotificationObserver::Impl {
    Handler handler;
    NotificationFollower *follower = nullptr;
    BusPointer connection;
    bool subscribed = false;
    bool failed = false;
    bool dispatching = false;
    Clock::time_point retry;         // while there is no connection
    Clock::time_point connectLimit;  // until subscribed
    // The bus lets anyone address a signal to this connection; only the owner's count.
    std::string serviceOwner;
    UserInfo userInfo;
    bus::SlotPointer listening;  // the answer that is waited for

    explicit Impl(Handler notificationHandler) : handler(std::move(notificationHandler)) {
        connect();
    }
    explicit Impl(NotificationFollower &notificationFollower)
        : handler([this](const UserInfo &info) { follower->notified(info); }),
          follower(&notificationFollower) {
        connect();
    }

    void connect() {
        failed = false;
        connection = bus::openSystemBus();
        connectLimit = Clock::now() + kConnectLimit;
        if (connection == nullptr || !subscribe()) {
            disconnect();
        }
    }

    // The order matters: the owner is known before the first notification arrives.
    bool subscribe() {
        return sd_bus_add_match_async(connection.get(), nullptr, ownerRule().c_str(),
                                      &Impl::onOwnerChanged, &Impl::onSubscribed, this) >= 0 &&
               sd_bus_call_method_async(connection.get(), nullptr, kBusName, kBusPath, kBusName,
                                        "GetNameOwner", &Impl::onOwner, this, "s",
                                        bus::kServiceName) >= 0 &&
               sd_bus_add_match_async(connection.get(), nullptr, notificationRule().c_str(),
                                      &Impl::onNotification, &Impl::onAllSubscribed, this) >= 0 &&
               // What is addressed to this connection needs no rule of the bus.
               (follower == nullptr ||
                sd_bus_add_filter(connection.get(), nullptr, &Impl::onAddressed, this) >= 0);
    }

    void disconnect() {
        listening.reset();
        connection.reset();
        subscribed = false;
        serviceOwner.clear();
        retry = Clock::now() + kRetryInterval;
        if (follower != nullptr) {
            follower->serviceWent();
        }
    }

    void setOwner(const char *owner) {
        serviceOwner = owner;
        listening.reset();
        if (follower == nullptr) {
            return;
        }
        if (serviceOwner.empty()) {
            follower->serviceWent();
        } else {
            listen();
        }
    }

    void listen() {
        follower->askedToListen();
        sd_bus_slot *slot = nullptr;
        if (sd_bus_call_method_async(connection.get(), &slot, serviceOwner.c_str(),
                                     bus::kServicePath, bus::kNotificationInterface, bus::kListen,
                                     &Impl::onListening, this, nullptr) < 0) {
            follower->hearsSinglesOnly();
        }
        listening.reset(slot);
    }

    static int onSubscribed(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
        static_cast<Impl *>(self)->failed |= sd_bus_message_is_method_error(reply, nullptr) > 0;
        return 1;
    }

    static int onAllSubscribed(sd_bus_message *reply, void *self, sd_bus_error *error) {
        onSubscribed(reply, self, error);
        auto *impl = static_cast<Impl *>(self);
        impl->subscribed = !impl->failed;
        return 1;
    }

    // An error says that nobody owns the name.
    static int onOwner(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
        const char *owner = nullptr;
        if (sd_bus_message_is_method_error(reply, nullptr) == 0 &&
            sd_bus_message_read_basic(reply, SD_BUS_TYPE_STRING, &owner) > 0) {
            static_cast<Impl *>(self)->setOwner(owner);
        }
        return 1;
    }

    static int onOwnerChanged(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        const char *name = nullptr;
        const char *before = nullptr;
        const char *after = nullptr;
        if (isFrom(message, kBusName) &&
            sd_bus_message_read(message, "sss", &name, &before, &after) > 0) {
            static_cast<Impl *>(self)->setOwner(after);
        }
        return 1;
    }

    static int onListening(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
        auto *impl = static_cast<Impl *>(self);
        const bus::SlotPointer answered = std::move(impl->listening);
        Checkpoint now;
        std::uint64_t waiting = 0;
        if (isTooLate(reply)) {
            // It was stopped, or the machine slept.
            impl->listen();
        } else if (sd_bus_message_is_method_error(reply, nullptr) == 0 &&
                   bus::readCheckpoint(reply, now) > 0 &&
                   sd_bus_message_read(reply, "t", &waiting) > 0 && waiting <= now.sets) {
            impl->follower->listens(now, waiting);
        } else {
            impl->follower->hearsSinglesOnly();
        }
        return 1;
    }

    static int onNotification(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        auto *impl = static_cast<Impl *>(self);
        if (isFrom(message, impl->serviceOwner) &&
            bus::readNotificationInfo(message, impl->userInfo)) {
            impl->handler(impl->userInfo);
        }
        return 1;
    }

    static int onAddressed(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        auto *impl = static_cast<Impl *>(self);
        const auto isSignal = [message](const char *member) {
            return sd_bus_message_is_signal(message, bus::kNotificationInterface, member) > 0;
        };
        if (isSignal(bus::kBatch) && isFrom(message, impl->serviceOwner)) {
            impl->takeBatch(message);
        } else if (isSignal(bus::kCheckpoint) && isFrom(message, impl->serviceOwner)) {
            std::uint64_t number = 0;
            Checkpoint checkpoint;
            if (sd_bus_message_read(message, "t", &number) > 0 &&
                bus::readCheckpoint(message, checkpoint) > 0) {
                impl->follower->checkpointCame(number, checkpoint);
            }
        }
        return 0;
    }

    void takeBatch(sd_bus_message *message) const {
        std::uint64_t number = 0;
        int file = -1;
        std::vector<NotificationBatch::Extent> runs;
        Checkpoint before;
        Checkpoint behind;
        if (sd_bus_message_read(message, "th", &number, &file) > 0 && readRuns(message, runs) &&
            bus::readCheckpoint(message, before) > 0 && bus::readCheckpoint(message, behind) > 0) {
            follower->batchCame(number, NotificationBatch::read(file, runs), before, behind);
        }
    }

    [[nodiscard]] bool isWaiting() const { return follower != nullptr && follower->isWaiting(); }

    /// Whether there may be more to do at once; negative when the connection is lost.
    int step(Clock::time_point end) {
        if (follower == nullptr) {
            return sd_bus_process(connection.get(), nullptr);
        }
        int result = 1;
        if (follower->isBusy()) {
            follower->work(end);
        } else {
            result = sd_bus_process(connection.get(), nullptr);
        }
        carryOut(follower->takeRequests());
        if (isWaiting()) {
            return 0;
        }
        return result < 0 ? result : static_cast<int>(result > 0 || follower->isBusy());
    }

    void carryOut(const NotificationFollower::Requests &requests) {
        if (serviceOwner.empty()) {
            return;
        }
        if (requests.taken) {
            sd_bus_message *made = nullptr;
            sd_bus_message_new_method_call(connection.get(), &made, serviceOwner.c_str(),
                                           bus::kServicePath, bus::kNotificationInterface,
                                           bus::kTaken);
            const bus::MessagePointer call(made);
            if (call && sd_bus_message_append(call.get(), "t", *requests.taken) >= 0 &&
                sd_bus_message_set_expect_reply(call.get(), 0) >= 0) {
                sd_bus_send(connection.get(), call.get(), nullptr);
            }
        }
        if (requests.listen) {
            listen();
        }
    }

    bool dispatch(std::chrono::milliseconds slice) {
        if (connection == nullptr) {
            if (Clock::now() >= retry) {
                connect();
            }
            return false;
        }
        const auto end = Clock::now() + slice;
        int result = 0;
        do {
            result = step(end);
        } while (result > 0 && Clock::now() < end);
        if (result < 0 || failed || (!subscribed && Clock::now() >= connectLimit)) {
            disconnect();
        }
        return connection != nullptr && result > 0;
    }
};

NotificationObserver::NotificationObserver(Handler handler)
    : m_impl(std::make_unique<Impl>(std::move(handler))) {}

NotificationObserver::NotificationObserver(NotificationFollower &follower)
    : m_impl(std::make_unique<Impl>(follower)) {}

NotificationObserver::~NotificationObserver() = default;

bool NotificationObserver::isConnected() const {
    return m_impl->subscribed;
}

void NotificationObserver::waitUntilConnected(std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    while (!isConnected() && fd() >= 0 && Clock::now() < end) {
        if (!dispatch(limit) && !isConnected()) {
            pollfd poll{fd(), events(), 0};
            ::poll(&poll, 1, static_cast<int>(bus::remaining(end).count()));
        }
    }
}

int NotificationObserver::fd() const {
    return m_impl->connection == nullptr ? -1 : sd_bus_get_fd(m_impl->connection.get());
}

short NotificationObserver::events() const {
    const bool isUseless = m_impl->connection == nullptr || m_impl->isWaiting();
    const int events = isUseless ? 0 : sd_bus_get_events(m_impl->connection.get());
    return static_cast<short>(std::max(events, 0));
}

std::optional<std::chrono::milliseconds> NotificationObserver::timeout() const {
    if (m_impl->connection == nullptr) {
        return bus::remaining(m_impl->retry);
    }
    if (m_impl->isWaiting()) {
        return kWaitInterval;
    }
    auto then = bus::processingTime(m_impl->connection.get());
    if (!m_impl->subscribed) {
        then = std::min(then.value_or(m_impl->connectLimit), m_impl->connectLimit);
    }
    return then ? std::optional(bus::remaining(*then)) : std::nullopt;
}

bool NotificationObserver::dispatch(std::chrono::milliseconds slice) {
    // A handler that runs an event loop of its own can come back here.
    if (m_impl->dispatching) {
        return false;
    }
    m_impl->dispatching = true;
    const bool more = m_impl->dispatch(slice);
    m_impl->dispatching = false;
    return more;
}

}  // namespace quorbel
