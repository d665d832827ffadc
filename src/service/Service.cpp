#include "service/Service.h"

#include "common/SettingsDocument.h"
#include "service/base/Journal.h"
#include "service/message/FilterProblems.h"

#include <sys/eventfd.h>
#include <systemd/sd-daemon.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint64_t kReportMicroseconds = 60'000'000;
constexpr std::chrono::seconds kLongestDrain{1};

using Clock = std::chrono::steady_clock;

EventLoopPointer makeLoop() {
    sd_event *loop = nullptr;
    if (sd_event_new(&loop) < 0) {
        throw std::runtime_error("no event loop");
    }
    return EventLoopPointer(loop);
}

}  // namespace

Service::Service(const std::filesystem::path &folder, const std::filesystem::path &configuration,
                 PassedSockets sockets, bool isHeld, std::uint16_t tlsPort)
    : m_loop(makeLoop()),
      m_started(std::time(nullptr)),
      m_leavesSockets(isHeld),
      m_configuration(configuration),
      m_store(folder),
      m_outputs(m_store, folder / "outputs"),
      m_settingsSignal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_settings(folder / kSettingsFileName, [this] { eventfd_write(m_settingsSignal.get(), 1); }),
      m_exporter(m_store),
      m_commands(m_store, m_settings, m_mail),
      m_worker(m_loop.get(), m_commands),
      m_retention(m_store, m_removals),
      m_removalTeller(m_removals, m_notifications),
      m_bus(
          m_loop.get(), m_notifications, m_worker, m_store, [this] { return removalsToTell(); },
          this),
      m_actions(
          [this](CommandRunner::Command command) { m_commandRunner.submit(std::move(command)); },
          [this](MailMessage mail) { m_mail.submit(std::move(mail)); }, m_counters),
      m_collector(m_store, m_notifications, m_names, m_actions, m_counters),
      m_udp(m_loop.get(), std::move(sockets.plain.value().udp), m_collector),
      m_tcp(m_loop.get(), std::move(sockets.plain.value().tcp), m_collector, m_counters, m_shares),
      m_tls(m_loop.get(), folder / "tls", tlsPort, m_collector, m_counters, m_shares) {
    m_store.prepare();
    m_settings.load();
    readConfiguration();
    resume(std::move(sockets));
    configure();
    m_terminate = watchSignal(SIGTERM, onStopSignal);
    m_interrupt = watchSignal(SIGINT, onStopSignal);
    m_reload = watchSignal(SIGHUP, onReloadSignal);
    m_settingsSource = required(watchInput(m_loop.get(), m_settingsSignal.get(), onSettings, this));
    // Before the command that brought them is answered.
    sd_event_source_set_priority(m_settingsSource.get(), SD_EVENT_PRIORITY_IMPORTANT);
    m_removalsSource = required(watchInput(m_loop.get(), m_removals.fd(), onRemovals, this));
    sd_event_source *timer = nullptr;
    sd_event_add_time_relative(m_loop.get(), &timer, CLOCK_MONOTONIC, kReportMicroseconds, 0,
                               onReportTime, this);
    m_reportTimer = required(EventSourcePointer(timer));
}

/// Goes on where the process before has stopped.
void Service::resume(PassedSockets sockets) {
    if (m_leavesSockets) {
        m_udp.resume(sockets.udpDrops);
    }
    m_tls.resume(std::move(sockets.tls));
    for (PassedSockets::Stream &stream : sockets.streams) {
        m_tcp.resume(std::move(stream));
    }
}

EventSourcePointer Service::watchSignal(int number, sd_event_signal_handler_t handler) {
    sd_event_source *source = nullptr;
    sd_event_add_signal(m_loop.get(), &source, number, handler, this);
    EventSourcePointer owner = required(EventSourcePointer(source));
    // Before the inputs, which may never be quiet.
    sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IMPORTANT);
    return owner;
}

Service::~Service() = default;

/// Hands the settings in force to every part that follows them.
void Service::configure() {
    const std::shared_ptr<const Dictionary> settings = m_settings.current();
    m_collector.configure(*settings);
    m_names.configure(*settings);
    m_actions.configure(*settings);
    m_retention.configure(*settings);
    m_mail.configure(*settings);
    m_exporter.configure(*settings);
    m_tls.configure();
    sayFilterProblems(*settings);
}

void Service::readConfiguration() {
    if (m_configuration.load()) {
        m_collector.trust(m_configuration.current().relays);
        m_outputs.configure(m_configuration.current());
    }
}

/// Once, and again when they are others.
void Service::sayFilterProblems(const Dictionary &settings) {
    std::vector<std::string> problems = filterProblems(settings);
    if (problems == m_filterProblems) {
        return;
    }
    for (const std::string &problem : problems) {
        say(JournalLevel::kWarning, problem);
    }
    m_filterProblems = std::move(problems);
}

bool Service::run() {
    // Does nothing unless the service manager asked for a sign of life.
    sd_event_set_watchdog(m_loop.get(), 1);
    sd_notify(0, "READY=1");
    bool works = true;
    while (works && !m_stopping) {
        works = turn(hasToTell() ? 0 : idleMicroseconds());
    }
    stop();
    return works;
}

/// How long there is nothing to do but for what the loop watches.
std::uint64_t Service::idleMicroseconds() const {
    const auto time = m_actions.reportTime();
    if (!time) {
        return UINT64_MAX;
    }
    const auto left = std::chrono::ceil<std::chrono::microseconds>(*time - Clock::now());
    return left.count() < 0 ? 0 : static_cast<std::uint64_t>(left.count());
}

NotificationSender::Removals Service::removalsToTell() const {
    // Asked first: what it could not tell is counted before it is done.
    const bool areTold = !m_retention.isBusy();
    return {m_removalTeller.untold() + m_retention.untold(), areTold};
}

bool Service::hasToTell() {
    return m_bus.canNotify() || m_removalTeller.canTell(m_bus.bus());
}

/// One event of the loop, and a share of the notifications. False when the loop is broken: it would
/// not wait any more, and hear of nothing.
bool Service::turn(std::uint64_t timeoutMicroseconds) {
    const int result = sd_event_run(m_loop.get(), timeoutMicroseconds);
    if (result < 0) {
        say(JournalLevel::kError, "The event loop has failed, and the service stops: " +
                                      std::generic_category().message(-result));
        return false;
    }
    m_removalTeller.tell(m_bus.bus());
    m_bus.sendNotifications();
    const auto reportTime = m_actions.reportTime();
    if (reportTime && Clock::now() >= *reportTime) {
        m_actions.report(Clock::now());
    }
    return true;
}

void Service::stop() {
    sd_notify(0, "STOPPING=1");
    m_retention.stop();
    m_exporter.stop();
    // A mail server may take long, and a command waits for it.
    m_mail.cancelSends();
    m_leavesSockets ? leaveInputs() : drainInputs();
    m_outputs.stop();
    finishTelling();
    m_bus.giveUp();
    m_commands.stop();
    m_actions.report(Actions::Clock::time_point::max());
    m_commandRunner.stop();
    m_mail.finishFirstTries(Clock::now() + std::chrono::seconds(5));
    m_mail.shutDown();
    updateCounters();
    say(JournalLevel::kInformation, describe(m_counters));
}

/// Takes in what the kernel holds: nobody else will.
void Service::drainInputs() {
    m_udp.drain(Clock::now() + std::chrono::seconds(5));
    // A connection may never be quiet, so there is less time for these.
    m_tcp.drain(Clock::now() + kLongestDrain);
    m_tls.drain(Clock::now() + kLongestDrain);
}

void Service::leaveInputs() {
    SocketKeeper keeper;
    const std::uint32_t drops = m_udp.leave();
    m_tcp.leave(Clock::now() + kLongestDrain, &keeper);
    m_tls.leave(Clock::now() + kLongestDrain, keeper);
    keeper.finish(drops);
}

/// Lets commands that were taken on end, and the bus take what it can.
void Service::finishTelling() {
    constexpr std::chrono::seconds kLongestTelling{2};
    constexpr std::chrono::seconds kLongestCommands{20};
    const auto start = Clock::now();
    constexpr std::uint64_t kWait = 10'000;
    while (Clock::now() - start <
           (m_worker.isIdle() ? std::chrono::seconds(kLongestTelling) : kLongestCommands)) {
        if (m_worker.isIdle() && !m_bus.hasUnsent() && !m_retention.isBusy()) {
            return;
        }
        if (!turn(hasToTell() ? 0 : kWait)) {
            return;
        }
    }
}

/// Asks the parts that count for themselves.
void Service::updateCounters() {
    m_counters.dropped = m_udp.dropped();
    m_counters.notificationsDropped =
        m_notifications.dropped() + m_removalTeller.untold() + m_retention.untold();
    m_counters.removed = m_retention.removed();
    m_counters.namesLookedUp = m_names.lookedUp();
    m_counters.namesFound = m_names.found();
    m_counters.namesNotLookedUp = m_names.notLookedUp();
    m_counters.commandsRun = m_commandRunner.started();
    m_counters.commandsNotRun = m_commandRunner.notStarted();
    m_counters.mailsSent = m_mail.sent();
    m_counters.mailsDropped = m_mail.dropped();
    const OutputTotals outputs = m_outputs.totals();
    m_counters.sentOn = outputs.sent;
    m_counters.removedUnsent = outputs.removedUnsent;
    m_counters.journalDropped = journalLinesDropped();
    m_counters.unsynced = m_store.unsynced();
}

const Counters &Service::currentCounters() {
    updateCounters();
    return m_counters;
}

std::vector<Listener> Service::listeners() const {
    std::vector<Listener> listeners{
        {"udp", m_udp.port()}, {"tcp", m_tcp.port()}, {"tls", m_tls.port()}};
    std::erase_if(listeners, [](const Listener &one) { return one.port == 0; });
    return listeners;
}

int Service::onStopSignal(sd_event_source * /*source*/, const struct signalfd_siginfo * /*info*/,
                          void *self) {
    static_cast<Service *>(self)->m_stopping = true;
    return 0;
}

int Service::onReloadSignal(sd_event_source * /*source*/, const struct signalfd_siginfo * /*info*/,
                            void *self) {
    say(JournalLevel::kInformation, "Reading the settings again");
    auto *service = static_cast<Service *>(self);
    // Not here: a command that stores settings may be waiting for the disk.
    service->m_worker.submit(Commands::Reload(), [](const std::string & /*reply*/) {});
    service->readConfiguration();
    // A renewed certificate is no setting.
    service->m_tls.configure();
    return 0;
}

int Service::onSettings(sd_event_source * /*source*/, int fd, std::uint32_t /*events*/,
                        void *self) {
    eventfd_t count = 0;
    eventfd_read(fd, &count);
    static_cast<Service *>(self)->configure();
    return 0;
}

int Service::onRemovals(sd_event_source * /*source*/, int fd, std::uint32_t /*events*/,
                        void * /*self*/) {
    // Only wakes the loop: they are told when nothing newer is left to tell.
    eventfd_t count = 0;
    eventfd_read(fd, &count);
    return 0;
}

int Service::onReportTime(sd_event_source *source, std::uint64_t /*time*/, void *self) {
    auto *service = static_cast<Service *>(self);
    service->updateCounters();
    if (service->m_counters != service->m_reported) {
        say(JournalLevel::kInformation, describe(service->m_counters));
        service->m_reported = service->m_counters;
    }
    sd_event_source_set_time_relative(source, kReportMicroseconds);
    sd_event_source_set_enabled(source, SD_EVENT_ONESHOT);
    return 0;
}

}  // namespace quorbel
