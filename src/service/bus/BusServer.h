#pragma once

#include "platform/bus/SdBus.h"
#include "service/base/SdEvent.h"
#include "service/bus/CommandWorker.h"
#include "service/bus/NotificationQueue.h"
#include "service/bus/NotificationSender.h"
#include "service/bus/RemovalTeller.h"
#include "service/bus/StatusProperties.h"

#include <cstdint>
#include <optional>

namespace quorbel {

/// The service on the system bus: takes commands, sends notifications, and says how it is.
///
/// Without a bus it does nothing but try again each second; the queue fills meanwhile.
/// Notifications that the connection still holds when the bus goes count as dropped; what becomes
/// of those that the bus has taken nobody can tell. Loop thread only; nothing here waits for the
/// bus.
class BusServer {
public:
    /// All must outlive the object. Without a `status` there is none to ask for.
    BusServer(sd_event *loop, NotificationQueue &notifications, CommandWorker &worker,
              LogStore &store, NotificationSender::RemovalsNow removals,
              StatusSource *status = nullptr);
    ~BusServer();
    BusServer(const BusServer &) = delete;
    BusServer &operator=(const BusServer &) = delete;

    /// Whether the bus takes notifications, if not at once. It is missing when it was looked for
    /// and not found, and may come back any time.
    [[nodiscard]] RemovalTeller::Bus bus() const {
        return m_problemSaid ? RemovalTeller::Bus::kMissing
               : m_ownsName  ? RemovalTeller::Bus::kThere
                             : RemovalTeller::Bus::kUnknown;
    }
    /// Whether sendNotifications() would send something now.
    [[nodiscard]] bool canNotify();
    /// Sends some of the queue, for at most about a millisecond and only while the connection takes
    /// it: the loop calls this once per turn, so that receiving and telling share its time.
    void sendNotifications();
    /// Whether something is left in the queue or in the connection that the bus may yet take.
    [[nodiscard]] bool hasUnsent() const;
    /// For the end: leaves the bus, and counts as dropped what it has not taken.
    void giveUp();

private:
    void connect();
    void noteTaken();
    void dropUnsent();
    void connectionLost(const char *what, int error);
    void submit(CommandWorker::Command command, sd_bus_message *call);

    static int onCommand(sd_bus_message *call, void *self, sd_bus_error *error);
    static int onCommandFile(sd_bus_message *call, void *self, sd_bus_error *error);
    static int onNameReply(sd_bus_message *reply, void *self, sd_bus_error *error);
    static int onDisconnected(sd_bus_message *signal, void *self, sd_bus_error *error);
    static int onRetryTime(sd_event_source *source, std::uint64_t time, void *self);

    static const sd_bus_vtable kVtable[];

    sd_event *m_loop;
    NotificationQueue &m_notifications;
    CommandWorker &m_worker;
    std::optional<StatusProperties> m_status;
    NotificationSender m_sender;
    bus::BusPointer m_bus;
    bool m_ownsName = false;
    bool m_problemSaid = false;
    /// Of what the connection holds, at most so many are notifications; others may be replies.
    std::uint64_t m_unsent = 0;
    EventSourcePointer m_retry;
};

}  // namespace quorbel
