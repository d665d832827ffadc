#include "service/bus/BusServer.h"

#include "platform/Text.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/BusValue.h"
#include "service/base/Journal.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint64_t kRetryMicroseconds = 1'000'000;
// Enough to keep the bus busy; what waits beyond that is better off in our own queue.
constexpr std::uint64_t kMostQueuedInConnection = 64;

std::uint64_t queuedInConnection(sd_bus *bus) {
    std::uint64_t count = 0;
    return sd_bus_get_n_queued_write(bus, &count) < 0 ? 0 : count;
}

}  // namespace

const sd_bus_vtable BusServer::kVtable[] = {
    SD_BUS_VTABLE_START(0),
    // Who may call is the business of the bus's policy file.
    SD_BUS_METHOD_WITH_NAMES(bus::kSetCommand, "a{sv}", SD_BUS_PARAM(command), "s",
                             SD_BUS_PARAM(reply), onCommand, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES(bus::kSetCommandFile, "h", SD_BUS_PARAM(command), "s",
                             SD_BUS_PARAM(reply), onCommandFile, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

BusServer::BusServer(sd_event *loop, NotificationQueue &notifications, CommandWorker &worker,
                     LogStore &store, NotificationSender::RemovalsNow removals,
                     StatusSource *status)
    : m_loop(loop),
      m_notifications(notifications),
      m_worker(worker),
      m_sender(loop, notifications, store, std::move(removals)) {
    if (status != nullptr) {
        m_status.emplace(*status);
    }
    sd_event_source *retry = nullptr;
    sd_event_add_time_relative(loop, &retry, CLOCK_MONOTONIC, 0, 0, onRetryTime, this);
    m_retry = required(EventSourcePointer(retry));
}

BusServer::~BusServer() {
    m_sender.leave();
    if (m_bus) {
        sd_bus_detach_event(m_bus.get());
    }
}

int BusServer::onRetryTime(sd_event_source * /*source*/, std::uint64_t /*time*/, void *self) {
    auto *server = static_cast<BusServer *>(self);
    // A connection cannot be closed from within its own handlers, so the lost one lasts until here.
    server->connect();
    return 0;
}

void BusServer::connect() {
    m_sender.leave();
    if (m_bus) {
        sd_bus_detach_event(m_bus.get());
    }
    m_bus = bus::openSystemBus();
    if (!m_bus) {
        connectionLost("There is no system bus", 0);
        return;
    }
    int result = sd_bus_add_object_vtable(m_bus.get(), nullptr, bus::kServicePath,
                                          bus::kCommandInterface, kVtable, this);
    if (result >= 0) {
        result = m_sender.addTo(m_bus.get());
    }
    if (result >= 0 && m_status) {
        result = m_status->addTo(m_bus.get());
    }
    if (result >= 0) {
        result =
            sd_bus_match_signal(m_bus.get(), nullptr, nullptr, "/org/freedesktop/DBus/Local",
                                "org.freedesktop.DBus.Local", "Disconnected", onDisconnected, this);
    }
    if (result >= 0) {
        result = sd_bus_attach_event(m_bus.get(), m_loop, SD_EVENT_PRIORITY_NORMAL);
    }
    if (result >= 0) {
        result = sd_bus_request_name_async(m_bus.get(), nullptr, bus::kServiceName, 0, onNameReply,
                                           this);
    }
    if (result < 0) {
        m_sender.leave();
        m_bus.reset();
        connectionLost("The system bus cannot be used", -result);
    }
}

/// Says so, unless it was said already, and tries again later.
void BusServer::connectionLost(const char *what, int error) {
    if (!m_problemSaid) {
        const std::string reason = error == 0 ? "" : ": " + std::generic_category().message(error);
        say(JournalLevel::kWarning,
            what + reason + "; the service continues without it and will try again");
    }
    m_problemSaid = true;
    m_ownsName = false;
    dropUnsent();
    sd_event_source_set_time_relative(m_retry.get(), kRetryMicroseconds);
    sd_event_source_set_enabled(m_retry.get(), SD_EVENT_ONESHOT);
}

int BusServer::onNameReply(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
    auto *server = static_cast<BusServer *>(self);
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) {
        server->connectionLost("The service's name on the system bus was refused",
                               sd_bus_message_get_errno(reply));
        return 0;
    }
    // 1: the name is ours now, 4: it was already (D-Bus, RequestName).
    std::uint32_t outcome = 0;
    sd_bus_message_read_basic(reply, SD_BUS_TYPE_UINT32, &outcome);
    if (outcome != 1 && outcome != 4) {
        server->connectionLost("The service's name on the system bus is taken", 0);
        return 0;
    }
    server->m_ownsName = true;
    server->m_problemSaid = false;
    say(JournalLevel::kInformation,
        "Connected to the system bus as " + std::string(bus::kServiceName));
    return 0;
}

int BusServer::onDisconnected(sd_bus_message * /*signal*/, void *self, sd_bus_error * /*error*/) {
    static_cast<BusServer *>(self)->connectionLost("The connection to the system bus was lost", 0);
    return 0;
}

bool BusServer::canNotify() {
    return m_ownsName && sd_bus_is_ready(m_bus.get()) > 0 &&
           queuedInConnection(m_bus.get()) < kMostQueuedInConnection && m_sender.canSend();
}

bool BusServer::hasUnsent() const {
    return m_ownsName && (!m_notifications.empty() || queuedInConnection(m_bus.get()) > 0);
}

void BusServer::giveUp() {
    noteTaken();
    m_ownsName = false;
    m_sender.leave();
    if (m_bus) {
        sd_bus_detach_event(m_bus.get());
        m_bus.reset();
    }
    m_retry.reset();
    dropUnsent();
    m_notifications.dropAll();
}

/// The connection sends in the order in which it was given things. Which of them have gone is not
/// told, so replies count as the first to go.
void BusServer::noteTaken() {
    m_unsent = m_ownsName ? std::min(m_unsent, queuedInConnection(m_bus.get())) : m_unsent;
}

/// A connection that is lost has forgotten already what it held, so this goes by the last look.
void BusServer::dropUnsent() {
    m_notifications.countDropped(std::exchange(m_unsent, 0));
}

void BusServer::sendNotifications() {
    constexpr std::chrono::milliseconds kSlice{1};
    const auto deadline = std::chrono::steady_clock::now() + kSlice;
    noteTaken();
    while (canNotify() && std::chrono::steady_clock::now() < deadline) {
        if (m_sender.send() == NotificationSender::Sent::kSingle) {
            ++m_unsent;
            noteTaken();
        }
    }
}

int BusServer::onCommand(sd_bus_message *call, void *self, sd_bus_error * /*error*/) {
    auto command = readFromMessage(call);
    if (!command) {
        return sd_bus_reply_method_return(call, "s", "The command cannot be read");
    }
    static_cast<BusServer *>(self)->submit(std::move(*command), call);
    return 1;
}

int BusServer::onCommandFile(sd_bus_message *call, void *self, sd_bus_error * /*error*/) {
    int fd = -1;
    const int result = sd_bus_message_read_basic(call, SD_BUS_TYPE_UNIX_FD, &fd);
    if (result < 0) {
        return result;
    }
    // The message keeps its own descriptor.
    static_cast<BusServer *>(self)->submit(UniqueFd(::fcntl(fd, F_DUPFD_CLOEXEC, 0)), call);
    return 1;
}

void BusServer::submit(CommandWorker::Command command, sd_bus_message *call) {
    const auto reply = [call = std::shared_ptr<sd_bus_message>(
                            sd_bus_message_ref(call), sd_bus_message_unref)](std::string text) {
        if (!isUtf8(text)) {
            // The name of somebody's file. Without this there would be no reply.
            std::ranges::replace_if(
                text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, '?');
        }
        // Nobody is left to tell when the caller has gone.
        sd_bus_reply_method_return(call.get(), "s", text.c_str());
    };
    if (!m_worker.submit(std::move(command), reply)) {
        reply("Too many commands are waiting");
    }
}

}  // namespace quorbel
