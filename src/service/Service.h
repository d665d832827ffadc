#pragma once

#include "service/actions/Actions.h"
#include "service/actions/CommandRunner.h"
#include "service/base/ConfigurationFile.h"
#include "service/base/Counters.h"
#include "service/base/SdEvent.h"
#include "service/base/StatusSource.h"
#include "service/bus/BusServer.h"
#include "service/bus/CommandWorker.h"
#include "service/bus/Commands.h"
#include "service/bus/NotificationQueue.h"
#include "service/bus/RemovalTeller.h"
#include "service/bus/SettingsFile.h"
#include "service/collect/Collector.h"
#include "service/export/Exporter.h"
#include "service/hosts/HostNames.h"
#include "service/input/ListenSockets.h"
#include "service/input/PassedSockets.h"
#include "service/input/TcpInput.h"
#include "service/input/TlsInput.h"
#include "service/input/UdpInput.h"
#include "service/mail/MailSender.h"
#include "service/output/Outputs.h"
#include "service/store/LogStore.h"
#include "service/store/RemovalFeed.h"
#include "service/store/Retention.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {

/// The whole service: its parts and the loop that drives them.
class Service : private StatusSource {
public:
    /// `folder` holds the settings, the log files and, in "tls", what TLS needs.
    /// `sockets.plain` must be there. When it `isHeld` by somebody else, it is left to the next
    /// process, with all that is connected. `configuration` is the file of what an administrator
    /// wants.
    Service(const std::filesystem::path &folder, const std::filesystem::path &configuration,
            PassedSockets sockets, bool isHeld, std::uint16_t tlsPort);
    ~Service() override;
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Runs until SIGTERM or SIGINT; then takes in what the kernel holds already and ends in order.
    /// Reads settings and configuration anew on SIGHUP. The caller has blocked the three for all
    /// threads. False when it ended because its loop failed.
    bool run();

private:
    EventSourcePointer watchSignal(int number, sd_event_signal_handler_t handler);
    void resume(PassedSockets sockets);
    void configure();
    void readConfiguration();
    void sayFilterProblems(const Dictionary &settings);
    [[nodiscard]] std::uint64_t idleMicroseconds() const;
    [[nodiscard]] bool hasToTell();
    [[nodiscard]] NotificationSender::Removals removalsToTell() const;
    bool turn(std::uint64_t timeoutMicroseconds);
    void stop();
    void drainInputs();
    void leaveInputs();
    void finishTelling();
    void updateCounters();
    [[nodiscard]] std::int64_t startTime() const override { return m_started; }
    [[nodiscard]] const Counters &currentCounters() override;
    [[nodiscard]] std::vector<Listener> listeners() const override;
    [[nodiscard]] const Refusals &refusals() const override { return m_collector.refusals(); }
    [[nodiscard]] std::vector<NamedResult> actionResults() const override {
        return m_actions.results();
    }
    [[nodiscard]] std::vector<NamedResult> exportResults() const override {
        return m_exporter.results();
    }
    [[nodiscard]] std::vector<OutputState> outputStates() const override {
        return m_outputs.states();
    }
    static int onStopSignal(sd_event_source *source, const struct signalfd_siginfo *info,
                            void *self);
    static int onReloadSignal(sd_event_source *source, const struct signalfd_siginfo *info,
                              void *self);
    static int onSettings(sd_event_source *source, int fd, std::uint32_t events, void *self);
    static int onRemovals(sd_event_source *source, int fd, std::uint32_t events, void *self);
    static int onReportTime(sd_event_source *source, std::uint64_t time, void *self);

    EventLoopPointer m_loop;
    bool m_stopping = false;
    const std::int64_t m_started;
    const bool m_leavesSockets;  ///< to the next process
    Counters m_counters;
    Counters m_reported;                        ///< as they were said last
    std::vector<std::string> m_filterProblems;  ///< the same

    ConfigurationFile m_configuration;

    // In the order of an event's way back from the front-end to the network.
    LogStore m_store;
    Outputs m_outputs;
    UniqueFd m_settingsSignal;  ///< an eventfd: other settings are in force
    SettingsFile m_settings;
    MailSender m_mail;
    Exporter m_exporter;
    Commands m_commands;
    CommandWorker m_worker;
    RemovalFeed m_removals;
    Retention m_retention;
    NotificationQueue m_notifications;
    RemovalTeller m_removalTeller;
    BusServer m_bus;
    HostNames m_names;
    CommandRunner m_commandRunner;
    Actions m_actions;
    Collector m_collector;
    UdpInput m_udp;
    ConnectionShares m_shares;
    TcpInput m_tcp;
    TlsInput m_tls;

    EventSourcePointer m_terminate;
    EventSourcePointer m_interrupt;
    EventSourcePointer m_reload;
    EventSourcePointer m_settingsSource;
    EventSourcePointer m_removalsSource;
    EventSourcePointer m_reportTimer;
};

}  // namespace quorbel
