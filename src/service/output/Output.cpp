#include "service/output/Output.h"

#include "service/base/Journal.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr std::chrono::milliseconds kMeasureInterval{1000};

std::int64_t secondOf(std::chrono::steady_clock::time_point time) {
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

}  // namespace

Output::Output(LogStore &store, const std::filesystem::path &folder, std::string_view kind,
               EventFeed::Settings settings)
    : m_feed(store, folder, settings), m_waker(store), m_name(std::move(settings.name)) {
    const MutexLock lock(m_mutex);
    m_state.name = m_name;
    m_state.kind = kind;
}

Output::~Output() = default;

void Output::start() {
    m_thread = std::thread([this] { work(); });
}

void Output::askToStop() {
    m_stopping = true;
    m_waker.wake();
}

void Output::stop() {
    askToStop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Output::work() {
    run();
    m_hasEnded = true;
}

void Output::run() {
    constexpr std::chrono::seconds kLook{1};
    while (!isStopping()) {
        const auto piece = next(pieceSize(), kLook);
        const auto problem = piece ? deliver(*piece) : std::nullopt;
        if (problem && !isStopping()) {
            noteProblem(*problem);
            measure();
            pause(patience());
        } else if (piece && !problem && acknowledge(piece->first + piece->count)) {
            noteWorking();
        }
        measure();
    }
}

std::optional<std::string> Output::deliver(const EventFeed::Piece & /*piece*/) {
    return std::nullopt;
}

std::optional<EventFeed::Piece> Output::next(std::size_t mostBytes, std::chrono::milliseconds limit,
                                             int fd) {
    // What comes within that time goes together: a wake-up and a piece an event would cost whoever
    // stores their part of the processor.
    constexpr std::chrono::milliseconds kGather{20};
    m_waker.clear();
    auto piece = m_feed.take(mostBytes);
    if (piece || isStopping()) {
        return piece;
    }
    if (!m_feed.problem().empty()) {
        noteProblem(m_feed.problem());
        pause(std::min<std::chrono::milliseconds>(limit, patience()));
        return std::nullopt;
    }
    waitForEvents(limit, fd);
    pause(kGather);
    m_waker.clear();
    return isStopping() ? std::nullopt : m_feed.take(mostBytes);
}

void Output::waitForEvents(std::chrono::milliseconds limit, int fd) {
    std::array<pollfd, 2> polled{pollfd{m_waker.fd(), POLLIN, 0}, pollfd{fd, POLLIN, 0}};
    if (m_waker.arm() && !isStopping()) {
        ::poll(polled.data(), polled.size(), static_cast<int>(limit.count()));
    }
}

void Output::pause(std::chrono::milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    pollfd polled{m_waker.fd(), POLLIN, 0};
    // A wake-up without stop is for what was stored.
    for (auto left = time; !isStopping() && left.count() > 0;
         left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now())) {
        m_waker.clear();
        if (!isStopping()) {
            ::poll(&polled, 1, static_cast<int>(left.count()));
        }
    }
}

std::chrono::milliseconds Output::patience() {
    constexpr std::chrono::seconds kMost{60};
    m_patience = std::clamp(m_patience * 2, std::chrono::seconds(1), kMost);
    return m_patience;
}

bool Output::acknowledge(std::uint64_t number) {
    if (m_feed.acknowledge(number)) {
        return true;
    }
    noteProblem("The cursor could not be written: " + std::generic_category().message(errno));
    return false;
}

void Output::noteSent(std::uint64_t events) {
    const std::int64_t second = secondOf(Clock::now());
    const MutexLock lock(m_mutex);
    m_state.sent += events;
    Second &slot = m_seconds.at(static_cast<std::size_t>(second) % kRateSeconds);
    slot = slot.second == second ? Second{second, slot.events + events} : Second{second, events};
}

void Output::noteProblem(const std::string &problem) {
    sayOnce(problem);
    const MutexLock lock(m_mutex);
    m_state.problem = problem;
    m_state.problemSeconds = std::time(nullptr);
}

void Output::sayOnce(const std::string &problem) {
    if (m_said != problem) {
        m_said = problem;
        say(JournalLevel::kWarning, "Output " + m_name + ": " + problem);
    }
}

void Output::noteWorking() {
    m_patience = std::chrono::seconds(0);
    if (!std::exchange(m_said, "").empty()) {
        say(JournalLevel::kNotice, "Output " + m_name + " works again");
    }
}

void Output::measure() {
    const Clock::time_point now = Clock::now();
    if (now - m_measured < kMeasureInterval) {
        return;
    }
    m_measured = now;
    const EventFeed::Lag lag = m_feed.measure();
    const MutexLock lock(m_mutex);
    m_state.lagEvents = lag.events;
    m_state.lagSeconds = lag.seconds;
}

OutputTotals Output::totals() const {
    const MutexLock lock(m_mutex);
    return {m_state.sent, m_feed.removedUnsent() - m_removedBefore};
}

OutputState Output::state() const {
    const Clock::time_point now = Clock::now();
    const MutexLock lock(m_mutex);
    OutputState state = m_state;
    state.removedUnsent = m_feed.removedUnsent();
    std::uint64_t events = 0;
    for (const Second &one : m_seconds) {
        const bool isRecent = one.second > secondOf(now) - static_cast<std::int64_t>(kRateSeconds);
        events += isRecent ? one.events : 0;
    }
    const auto age = std::chrono::duration<double>(now - m_begin).count();
    state.rate =
        static_cast<double>(events) / std::clamp(age, 1.0, static_cast<double>(kRateSeconds));
    return state;
}

}  // namespace quorbel
