#include "platform/bus/NotificationObserver.h"

#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"

#include <poll.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace quorbel {

using bus::BusPointer;
using bus::Clock;

namespace {

constexpr std::chrono::seconds kRetryInterval{1};
constexpr std::chrono::seconds kConnectLimit{10};

constexpr const char *kBusName = "org.freedesktop.DBus";
constexpr const char *kBusPath = "/org/freedesktop/DBus";

// sd-bus refuses texts that the bus passes on: those with a code point that Unicode keeps from
// being a character. Nothing leads past such a text.
constexpr std::string_view kUnreadable = "\xEF\xBF\xBD";

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

enum class Read { kText, kOther, kRefused };

Read readText(sd_bus_message *message, std::string_view &text) {
    const char *start = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &start) <= 0) {
        return Read::kRefused;
    }
    text = start;
    return Read::kText;
}

// A variant of another type is skipped.
Read readVariantText(sd_bus_message *message, std::string_view &text) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, "s") <= 0) {
        return sd_bus_message_skip(message, "v") < 0 ? Read::kRefused : Read::kOther;
    }
    const Read read = readText(message, text);
    return sd_bus_message_exit_container(message) < 0 ? Read::kRefused : read;
}

// Reads entries up to the end; false at one that sd-bus refuses to read or to pass over, with
// kUnreadable for its value.
bool readEntries(sd_bus_message *message, bool variants, NotificationObserver::UserInfo &userInfo) {
    const char *members = variants ? "sv" : "ss";
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, members) > 0) {
        std::string_view key;
        std::string_view value;
        if (readText(message, key) == Read::kRefused) {
            return false;
        }
        const Read read = variants ? readVariantText(message, value) : readText(message, value);
        if (read != Read::kOther) {
            userInfo.emplace_back(key, read == Read::kText ? value : kUnreadable);
        }
        if (read == Read::kRefused || sd_bus_message_exit_container(message) < 0) {
            return false;
        }
    }
    return true;
}

// Fills `userInfo` from an a{ss}, or from the texts of an a{sv}, as far as sd-bus reads them; false
// when the message holds neither.
bool readUserInfo(sd_bus_message *message, NotificationObserver::UserInfo &userInfo) {
    userInfo.clear();
    char type = '\0';
    const char *contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0 || type != SD_BUS_TYPE_ARRAY) {
        return false;
    }
    const bool variants = std::strcmp(contents, "{sv}") == 0;
    if ((!variants && std::strcmp(contents, "{ss}") != 0) ||
        sd_bus_message_enter_container(message, type, variants ? "{sv}" : "{ss}") <= 0) {
        return false;
    }
    return !readEntries(message, variants, userInfo) || sd_bus_message_exit_container(message) >= 0;
}

}  // namespace

struct NotificationObserver::Impl {
    Handler handler;
    BusPointer connection;
    bool subscribed = false;
    bool failed = false;
    bool dispatching = false;
    Clock::time_point retry;         // while there is no connection
    Clock::time_point connectLimit;  // until subscribed
    // The bus lets anyone address a signal to this connection; only the owner's count.
    std::string serviceOwner;
    UserInfo userInfo;

    explicit Impl(Handler notificationHandler) : handler(std::move(notificationHandler)) {
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
                                      &Impl::onNotification, &Impl::onAllSubscribed, this) >= 0;
    }

    void disconnect() {
        connection.reset();
        subscribed = false;
        serviceOwner.clear();
        retry = Clock::now() + kRetryInterval;
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
            static_cast<Impl *>(self)->serviceOwner = owner;
        }
        return 1;
    }

    static int onOwnerChanged(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        const char *name = nullptr;
        const char *before = nullptr;
        const char *after = nullptr;
        if (isFrom(message, kBusName) &&
            sd_bus_message_read(message, "sss", &name, &before, &after) > 0) {
            static_cast<Impl *>(self)->serviceOwner = after;
        }
        return 1;
    }

    static int onNotification(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        auto *impl = static_cast<Impl *>(self);
        if (isFrom(message, impl->serviceOwner) && readUserInfo(message, impl->userInfo)) {
            impl->handler(impl->userInfo);
        }
        return 1;
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
            result = sd_bus_process(connection.get(), nullptr);
        } while (result > 0 && Clock::now() < end);
        if (result < 0 || failed || (!subscribed && Clock::now() >= connectLimit)) {
            disconnect();
        }
        return connection != nullptr && result > 0;
    }
};

NotificationObserver::NotificationObserver(Handler handler)
    : m_impl(std::make_unique<Impl>(std::move(handler))) {}

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
    const int events =
        m_impl->connection == nullptr ? 0 : sd_bus_get_events(m_impl->connection.get());
    return static_cast<short>(std::max(events, 0));
}

std::optional<std::chrono::milliseconds> NotificationObserver::timeout() const {
    if (m_impl->connection == nullptr) {
        return bus::remaining(m_impl->retry);
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
