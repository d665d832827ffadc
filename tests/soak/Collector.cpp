#include "soak/Collector.h"

#include "load/LoadCheck.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <optional>
#include <string_view>

namespace quorbel::soak {

namespace {

using namespace std::chrono_literals;

constexpr auto kLongestFault = 3000ms;

/// Takes all room that the disk has.
void takeAllRoom(const std::filesystem::path &filler) {
    static const std::string block(std::size_t{1} << 16U, '\0');
    const int file = ::open(filler.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    for (std::size_t size : {block.size(), std::size_t{1}}) {
        while (::write(file, block.data(), size) > 0) {
        }
    }
    ::close(file);
}

}  // namespace

Collector::Collector(testing::PrivateBus &bus, Place place, unsigned seed,
                     std::chrono::milliseconds between)
    : m_bus(bus), m_place(std::move(place)), m_between(between), m_random(seed) {
    m_thread = std::thread([this] { work(); });
    testing::waitUntil([this] { return isWell() || !failures().empty(); });
}

Collector::~Collector() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void Collector::setFaults(bool on) {
    const std::lock_guard lock(m_mutex);
    m_hasFaults = on;
    m_changed.notify_all();
}

void Collector::holdFaults(bool hold) {
    const std::lock_guard lock(m_mutex);
    m_isHeld = hold;
    m_changed.notify_all();
}

bool Collector::isWell() const {
    const std::lock_guard lock(m_mutex);
    return m_isWell && !m_isToRestart;
}

void Collector::restart() {
    const std::lock_guard lock(m_mutex);
    m_isToRestart = true;
    m_changed.notify_all();
}

std::string Collector::told() const {
    static constexpr std::array kNames{"killed", "stopped", "bus gone", "disk full", "restarted"};
    const std::lock_guard lock(m_mutex);
    std::string text;
    for (std::size_t i = 0; i < kFaultCount; ++i) {
        text += (i == 0 ? "" : ", ") + std::string(kNames[i]) + ' ' + std::to_string(m_taken[i]);
    }
    return text;
}

std::vector<std::string> Collector::failures() const {
    const std::lock_guard lock(m_mutex);
    return m_failures;
}

std::vector<TimeSpan> Collector::fullTimes() const {
    const std::lock_guard lock(m_mutex);
    return m_fullTimes;
}

std::uint64_t Collector::notStored() const {
    const std::lock_guard lock(m_mutex);
    return m_notStored;
}

std::string Collector::lastJournal() const {
    const std::lock_guard lock(m_mutex);
    return m_journal;
}

/// The service dies with the thread that starts it, and so does the bus.
void Collector::work() {
    start();
    std::unique_lock lock(m_mutex);
    m_isWell = true;
    const auto isTold = [this] { return m_isStopping || m_isToRestart; };
    while (!m_isStopping) {
        const auto pause = m_between * std::uniform_int_distribution(5, 15)(m_random) / 10;
        m_changed.wait_for(lock, pause, isTold);
        m_changed.wait(lock, [&] { return isTold() || mayFail(); });
        if (!m_isStopping) {
            m_isWell = false;
            const Fault fault = m_isToRestart ? kRestart : anyFault();
            ++m_taken[fault];
            lock.unlock();
            take(fault);
            lock.lock();
            m_isToRestart = false;
            m_isWell = true;
        }
    }
    lock.unlock();
    stop();
}

/// Each in turn, then any.
Collector::Fault Collector::anyFault() {
    const int last = m_place.filler.empty() ? kBus : kDisk;
    return static_cast<Fault>(
        m_faults++ <= last ? (m_faults - 1) : std::uniform_int_distribution(0, last)(m_random));
}

void Collector::take(Fault fault) {
    switch (fault) {
        case kKill:
            m_hasLost ? stop() : m_service->kill();
            sleepUpTo(kLongestFault);
            start();
            break;
        case kBus:
            stopBus();
            break;
        case kDisk:
            fillDisk();
            break;
        case kStop:
            stop();
            sleepUpTo(kLongestFault);
            start();
            break;
        default:
            stop();
            start();
    }
}

void Collector::stopBus() {
    const std::size_t before = timesOnBus();
    m_bus.stop();
    sleepUpTo(kLongestFault);
    m_bus.start();
    testing::waitUntil([&] { return timesOnBus() > before; });
}

/// Only then is a command sure to reach the service.
std::size_t Collector::timesOnBus() const {
    static constexpr std::string_view kLine = "Connected to the system bus";
    const std::string journal = m_service->journal();
    std::size_t times = 0;
    for (std::size_t at = 0; (at = journal.find(kLine, at)) != std::string::npos; ++at) {
        ++times;
    }
    return times;
}

void Collector::fillDisk() {
    m_hasLost = true;
    const std::time_t from = std::time(nullptr);
    takeAllRoom(m_place.filler);
    sleepUpTo(kLongestFault);
    std::filesystem::remove(m_place.filler);
    const std::lock_guard lock(m_mutex);
    m_fullTimes.push_back({from, std::time(nullptr)});
}

void Collector::start() {
    m_service.reset();
    m_service = std::make_unique<testing::ServiceProcess>(
        testing::ServiceProcess::Setup{.library = m_place.library,
                                       .busAddress = m_bus.address(),
                                       .arguments = {"--port", std::to_string(m_port)}});
    if (!m_service->isListening()) {
        fail("The service does not start: " + m_service->journal());
    }
    testing::waitUntil([this] { return timesOnBus() > 0; });
    m_port = m_service->port();
    m_pid = m_service->pid();
}

void Collector::stop() {
    const std::optional<int> status = m_service->terminate();
    const std::string journal = m_service->journal();
    if (status != 0) {
        fail("The service does not end with 0: " + journal);
    }
    checkBalance(journal);
    m_hasLost = false;
    const std::lock_guard lock(m_mutex);
    m_journal = journal;
    m_notStored += load::counter(journal, "not stored");
}

/// Of what came in nothing goes missing without a number that says so.
void Collector::checkBalance(const std::string &journal) {
    const auto counted = [&](const char *name) { return load::counter(journal, name); };
    const std::uint64_t received = counted("Received");
    const std::uint64_t settled = counted("stored") + counted("not stored") + counted("filtered");
    if (received + counted("events set") != settled) {
        fail("The service's counters do not balance: " + std::to_string(received) +
             " received, and " + std::to_string(settled) + " stored, not stored and filtered");
    }
}

void Collector::fail(const std::string &what) {
    const std::lock_guard lock(m_mutex);
    m_failures.push_back(what);
}

void Collector::sleepUpTo(std::chrono::milliseconds longest) {
    std::uniform_int_distribution<std::int64_t> any(0, longest.count());
    std::this_thread::sleep_for(std::chrono::milliseconds(any(m_random)));
}

}  // namespace quorbel::soak
