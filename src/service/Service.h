#pragma once

#include "service/Collector.h"
#include "service/Counters.h"
#include "service/SdEvent.h"
#include "service/bus/BusServer.h"
#include "service/bus/CommandWorker.h"
#include "service/bus/Commands.h"
#include "service/bus/NotificationQueue.h"
#include "service/bus/SettingsFile.h"
#include "service/input/ListenSockets.h"
#include "service/input/TcpInput.h"
#include "service/input/UdpInput.h"
#include "service/store/LogStore.h"

#include <cstdint>
#include <string>

namespace quorbel {

/// The whole service: its parts and the loop that drives them.
class Service {
public:
    /// `folder` holds the settings and the log files.
    Service(const std::filesystem::path &folder, ListenSockets sockets);
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Runs until SIGTERM or SIGINT, which the caller has blocked for all threads; then takes in
    /// what the kernel holds already and ends in order.
    void run();

private:
    EventSourcePointer watchSignal(int number);
    void turn(std::uint64_t timeoutMicroseconds);
    void stop();
    void finishTelling();
    void reportCounters();
    static int onStopSignal(sd_event_source *source, const struct signalfd_siginfo *info,
                            void *self);
    static int onReportTime(sd_event_source *source, std::uint64_t time, void *self);

    EventLoopPointer m_loop;
    bool m_stopping = false;
    Counters m_counters;
    Counters m_reported;

    // In the order of an event's way back from the front-end to the network.
    LogStore m_store;
    SettingsFile m_settings;
    Commands m_commands;
    CommandWorker m_worker;
    NotificationQueue m_notifications;
    BusServer m_bus;
    Collector m_collector;
    UdpInput m_udp;
    TcpInput m_tcp;

    EventSourcePointer m_terminate;
    EventSourcePointer m_interrupt;
    EventSourcePointer m_reportTimer;
};

}  // namespace quorbel
