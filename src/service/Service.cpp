#include "service/Service.h"

#include "core/SettingsDocument.h"
#include "service/Journal.h"

#include <systemd/sd-daemon.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint64_t kReportMicroseconds = 60'000'000;

using Clock = std::chrono::steady_clock;

EventLoopPointer makeLoop() {
    sd_event *loop = nullptr;
    if (sd_event_new(&loop) < 0) {
        throw std::runtime_error("no event loop");
    }
    return EventLoopPointer(loop);
}

}  // namespace

Service::Service(const std::filesystem::path &folder, ListenSockets sockets)
    : m_loop(makeLoop()),
      m_store(folder),
      m_settings(folder / kSettingsFileName),
      m_commands(m_store, m_settings),
      m_worker(m_loop.get(), m_commands),
      m_bus(m_loop.get(), m_notifications, m_worker),
      m_collector(m_store, m_notifications, m_counters),
      m_udp(m_loop.get(), std::move(sockets.udp), m_collector),
      m_tcp(m_loop.get(), std::move(sockets.tcp), m_collector, m_counters) {
    m_store.prepare();
    m_settings.load();
    m_terminate = watchSignal(SIGTERM);
    m_interrupt = watchSignal(SIGINT);
    sd_event_source *timer = nullptr;
    sd_event_add_time_relative(m_loop.get(), &timer, CLOCK_MONOTONIC, kReportMicroseconds, 0,
                               onReportTime, this);
    m_reportTimer = required(EventSourcePointer(timer));
}

EventSourcePointer Service::watchSignal(int number) {
    sd_event_source *source = nullptr;
    sd_event_add_signal(m_loop.get(), &source, number, onStopSignal, this);
    EventSourcePointer owner = required(EventSourcePointer(source));
    // Before the inputs, which may never be quiet.
    sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IMPORTANT);
    return owner;
}

Service::~Service() = default;

void Service::run() {
    // Does nothing unless the service manager asked for a sign of life.
    sd_event_set_watchdog(m_loop.get(), 1);
    sd_notify(0, "READY=1");
    while (!m_stopping) {
        turn(m_bus.canNotify() ? 0 : UINT64_MAX);
    }
    stop();
}

/// One event of the loop, and a share of the notifications.
void Service::turn(std::uint64_t timeoutMicroseconds) {
    sd_event_run(m_loop.get(), timeoutMicroseconds);
    m_bus.sendNotifications();
}

void Service::stop() {
    sd_notify(0, "STOPPING=1");
    // A connection may never be quiet, so there is less time for these.
    m_udp.drain(Clock::now() + std::chrono::seconds(5));
    m_tcp.drain(Clock::now() + std::chrono::seconds(1));
    finishTelling();
    reportCounters();
}

/// Lets commands that were taken on end, and the bus take what it can.
void Service::finishTelling() {
    constexpr std::chrono::seconds kLongestTelling{2};
    constexpr std::chrono::seconds kLongestCommands{20};
    const auto start = Clock::now();
    constexpr std::uint64_t kWait = 10'000;
    while (Clock::now() - start <
           (m_worker.isIdle() ? std::chrono::seconds(kLongestTelling) : kLongestCommands)) {
        if (m_worker.isIdle() && !m_bus.hasUnsent()) {
            return;
        }
        turn(m_bus.canNotify() ? 0 : kWait);
    }
}

void Service::reportCounters() {
    m_counters.dropped = m_udp.dropped();
    m_counters.notificationsDropped = m_notifications.dropped();
    if (m_counters != m_reported) {
        say(JournalLevel::kInformation, describe(m_counters));
        m_reported = m_counters;
    }
}

int Service::onStopSignal(sd_event_source * /*source*/, const struct signalfd_siginfo * /*info*/,
                          void *self) {
    static_cast<Service *>(self)->m_stopping = true;
    return 0;
}

int Service::onReportTime(sd_event_source *source, std::uint64_t /*time*/, void *self) {
    static_cast<Service *>(self)->reportCounters();
    sd_event_source_set_time_relative(source, kReportMicroseconds);
    sd_event_source_set_enabled(source, SD_EVENT_ONESHOT);
    return 0;
}

}  // namespace quorbel
