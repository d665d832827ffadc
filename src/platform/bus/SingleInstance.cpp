#include "platform/bus/SingleInstance.h"

#include "platform/bus/SdBus.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

namespace quorbel {

using bus::BusPointer;
using bus::Clock;

namespace {

constexpr const char *kName = "com.Halvern.Quorbel";
constexpr const char *kPath = "/com/Halvern/Quorbel";
constexpr const char *kInterface = "org.freedesktop.Application";
constexpr const char *kActivate = "Activate";

// For the bus to answer, and again for the first instance to.
constexpr std::chrono::seconds kAnswerLimit{2};
constexpr int kAttempts = 3;

bool becomesReady(sd_bus *connection) {
    const auto deadline = Clock::now() + kAnswerLimit;
    while (Clock::now() < deadline) {
        const int result = sd_bus_process(connection, nullptr);
        if (result < 0 || sd_bus_is_ready(connection) > 0) {
            return result >= 0;
        }
        if (result == 0) {
            const auto until =
                std::min(bus::processingTime(connection).value_or(deadline), deadline);
            pollfd input{sd_bus_get_fd(connection),
                         static_cast<short>(sd_bus_get_events(connection)), 0};
            poll(&input, 1, static_cast<int>(bus::remaining(until).count()));
        }
    }
    return false;
}

// Whether there is an instance that was asked; one that hangs counts.
bool activateFirst(sd_bus *connection) {
    sd_bus_message *message = nullptr;
    if (sd_bus_message_new_method_call(connection, &message, kName, kPath, kInterface, kActivate) <
        0) {
        return false;
    }
    const bus::MessagePointer call(message);
    sd_bus_message_set_auto_start(message, 0);
    sd_bus_message_append(message, "a{sv}", 0);
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_call(connection, message, 0, &error, nullptr);
    const bool gone = sd_bus_error_has_name(&error, SD_BUS_ERROR_SERVICE_UNKNOWN) > 0 ||
                      sd_bus_error_has_name(&error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0;
    sd_bus_error_free(&error);
    return !gone;
}

}  // namespace

struct SingleInstance::Impl {
    std::function<void()> onActivate;
    BusPointer connection = bus::openSessionBus();
    Role role = Role::kNoSession;

    explicit Impl(std::function<void()> handler) : onActivate(std::move(handler)) {
        if (connection != nullptr && becomesReady(connection.get())) {
            role = settleRole();
        }
        if (role != Role::kFirst) {
            connection.reset();
        }
    }

    Role settleRole() {
        const std::chrono::microseconds limit = kAnswerLimit;
        sd_bus_set_method_call_timeout(connection.get(), static_cast<std::uint64_t>(limit.count()));
        // There before the name is: an Activate that follows at once finds it.
        sd_bus_add_object(connection.get(), nullptr, kPath, &Impl::onMessage, this);
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            const int result = sd_bus_request_name(connection.get(), kName, 0);
            if (result >= 0) {
                return Role::kFirst;
            }
            if (result != -EEXIST) {
                return Role::kNoSession;
            }
            // It can end between the two.
            if (activateFirst(connection.get())) {
                return Role::kSecond;
            }
        }
        return Role::kNoSession;
    }

    static int onMessage(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        if (sd_bus_message_is_method_call(message, kInterface, kActivate) <= 0) {
            return 0;
        }
        if (sd_bus_message_has_signature(message, "a{sv}") <= 0) {
            return -EINVAL;
        }
        sd_bus_reply_method_return(message, nullptr);
        static_cast<Impl *>(self)->onActivate();
        return 1;
    }

    void dispatch() {
        int result = 1;
        while (connection != nullptr && result > 0) {
            result = sd_bus_process(connection.get(), nullptr);
        }
        // -EBUSY: from within onActivate.
        if (result < 0 && result != -EBUSY) {
            connection.reset();
        }
    }
};

SingleInstance::SingleInstance(std::function<void()> onActivate)
    : m_impl(std::make_unique<Impl>(std::move(onActivate))) {}

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::role() const {
    return m_impl->role;
}

int SingleInstance::fd() const {
    return m_impl->connection == nullptr ? -1 : sd_bus_get_fd(m_impl->connection.get());
}

void SingleInstance::dispatch() {
    m_impl->dispatch();
}

}  // namespace quorbel
