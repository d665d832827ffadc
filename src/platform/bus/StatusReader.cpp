#include "platform/bus/StatusReader.h"

#include "platform/bus/AnyBusValue.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quorbel {

using bus::BusPointer;
using bus::Clock;
using bus::MessagePointer;

namespace {

MessagePointer question(sd_bus *connection) {
    sd_bus_message *message = nullptr;
    if (sd_bus_message_new_method_call(connection, &message, bus::kServiceName, bus::kServicePath,
                                       "org.freedesktop.DBus.Properties", "GetAll") < 0) {
        return nullptr;
    }
    MessagePointer call(message);
    const bool isMade = sd_bus_message_append(call.get(), "s", bus::kStatusInterface) >= 0 &&
                        sd_bus_message_set_auto_start(call.get(), 0) >= 0;
    return isMade ? std::move(call) : nullptr;
}

StatusOutcome outcomeOf(const sd_bus_error &error) {
    constexpr std::string_view kPrefix = "org.freedesktop.DBus.Error.";
    std::string_view name = error.name != nullptr ? error.name : "";
    name.remove_prefix(name.starts_with(kPrefix) ? kPrefix.size() : 0);
    if (name == "AccessDenied") {
        return StatusOutcome::kNotAllowed;
    }
    if (name == "NameHasNoOwner" || name == "ServiceUnknown") {
        return StatusOutcome::kNotRunning;
    }
    const bool isUnknown = name == "UnknownInterface" || name == "UnknownProperty" ||
                           name == "UnknownMethod" || name == "UnknownObject";
    return isUnknown ? StatusOutcome::kTooOld : StatusOutcome::kNoAnswer;
}

StatusAnswer answerOf(sd_bus_message *reply) {
    if (const sd_bus_error *error = sd_bus_message_get_error(reply)) {
        return {outcomeOf(*error), {}};
    }
    std::optional<Value> read = readAnyFromMessage(reply);
    const Dictionary *properties = read ? read->dictionary() : nullptr;
    // A service without the interface has no properties in it.
    if (properties == nullptr || properties->empty()) {
        return {StatusOutcome::kTooOld, {}};
    }
    return {StatusOutcome::kTold, *properties};
}

}  // namespace

struct StatusReader::Impl {
    Handler handler;
    std::chrono::milliseconds patience;
    BusPointer connection{};
    bool isAsking = false;
    Clock::time_point deadline{};

    void ask() {
        isAsking = true;
        deadline = Clock::now() + patience;
        if (connection == nullptr) {
            connection = bus::openSystemBus();
        }
        if (connection == nullptr || !send()) {
            finish({StatusOutcome::kNoBus, {}});
        }
    }

    bool send() {
        const MessagePointer call = question(connection.get());
        return call != nullptr && sd_bus_call_async(connection.get(), nullptr, call.get(),
                                                    &Impl::onReply, this, 0) >= 0;
    }

    static int onReply(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
        auto *impl = static_cast<Impl *>(self);
        impl->isAsking = false;
        impl->handler(answerOf(reply));
        return 1;
    }

    void dispatch() {
        // After an answer, too: the bus may go while nothing is asked.
        int result = connection == nullptr ? 0 : 1;
        while (result > 0) {
            result = sd_bus_process(connection.get(), nullptr);
        }
        if (result < 0) {
            finish({StatusOutcome::kNoBus, {}});
        } else if (isAsking && Clock::now() >= deadline) {
            const bool isOpen = sd_bus_is_ready(connection.get()) > 0;
            finish({isOpen ? StatusOutcome::kNoAnswer : StatusOutcome::kNoBus, {}});
        }
    }

    /// With the connection: an answer that comes too late must not be taken for the next one's.
    void finish(StatusAnswer answer) {
        connection.reset();
        if (std::exchange(isAsking, false)) {
            handler(std::move(answer));
        }
    }
};

StatusReader::StatusReader(Handler handler, std::chrono::milliseconds patience)
    : m_impl(std::make_unique<Impl>(Impl{std::move(handler), patience})) {}

StatusReader::~StatusReader() = default;

void StatusReader::ask() {
    if (!m_impl->isAsking) {
        m_impl->ask();
    }
}

bool StatusReader::isAsking() const {
    return m_impl->isAsking;
}

int StatusReader::fd() const {
    return m_impl->connection == nullptr ? -1 : sd_bus_get_fd(m_impl->connection.get());
}

short StatusReader::events() const {
    const int events =
        m_impl->connection == nullptr ? 0 : sd_bus_get_events(m_impl->connection.get());
    return static_cast<short>(std::max(events, 0));
}

std::optional<std::chrono::milliseconds> StatusReader::timeout() const {
    if (m_impl->connection == nullptr || !m_impl->isAsking) {
        return std::nullopt;
    }
    const auto then = bus::processingTime(m_impl->connection.get()).value_or(m_impl->deadline);
    return bus::remaining(std::min(then, m_impl->deadline));
}

void StatusReader::dispatch() {
    m_impl->dispatch();
}

}  // namespace quorbel
