#include "soak/StallWatch.h"

#include <cxxabi.h>
#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace quorbel::soak {

namespace {

constexpr int kBeatMs = 5;
constexpr double kNanosecondsOfOne = 1e6;
constexpr std::size_t kKept = 10;
constexpr std::chrono::milliseconds kNap{5};
constexpr std::chrono::milliseconds kWorthALook{40};
constexpr double kWorthTheCallsMs = 100;
constexpr int kMostCalls = 40;

/// Of the watched thread, which the signal interrupts.
std::array<void *, kMostCalls> calls;
std::atomic<int> callCount = 0;

void noteCalls(int /*signal*/) {
    callCount = backtrace(calls.data(), kMostCalls);
}

/// Of "FILE(NAME+OFFSET) [ADDRESS]" the name as it stands in the sources; nothing where it has
/// none.
std::string readable(const std::string &call) {
    const std::size_t begin = call.find('(') + 1;
    const std::size_t end = call.find('+', begin);
    if (begin == 0 || end == std::string::npos) {
        return {};
    }
    const std::string name = call.substr(begin, end - begin);
    const std::unique_ptr<char, decltype(&std::free)> plain(
        abi::__cxa_demangle(name.c_str(), nullptr, nullptr, nullptr), &std::free);
    return plain ? std::string(plain.get()) : std::string();
}

/// Without the signal's own.
std::vector<std::string> takeCalls() {
    constexpr int kOwn = 2;
    const int count = callCount.exchange(0);
    if (count == 0) {
        return {};
    }
    const std::unique_ptr<char *, decltype(&std::free)> texts(
        backtrace_symbols(calls.data(), count), &std::free);
    std::vector<std::string> result;
    for (int i = kOwn; i < count; ++i) {
        if (const std::string call = readable(texts.get()[i]); !call.empty()) {
            result.push_back(call);
        }
    }
    return result;
}

}  // namespace

StallWatch::StallWatch() : m_schedule(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {
    m_clock.start();
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &StallWatch::beat);
    // The first call loads a library, which a signal must not.
    noteCalls(0);
    struct sigaction action {};
    action.sa_handler = noteCalls;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGUSR2, &action, nullptr);
    m_looking = std::thread([this, watched = pthread_self()] { watch(watched); });
    start();
}

StallWatch::~StallWatch() {
    m_isDone = true;
    m_looking.join();
}

/// Sleeps, mostly. Looks at the thread once it has not beaten for a while.
void StallWatch::watch(pthread_t watched) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    unsigned seen = 0;
    int quiet = 0;
    while (!m_isDone) {
        const auto before = std::chrono::steady_clock::now();
        std::this_thread::sleep_for(kNap);
        m_late = m_late + (Milliseconds(std::chrono::steady_clock::now() - before) - kNap).count();
        quiet = seen == m_beats ? quiet + 1 : 0;
        seen = m_beats;
        if (m_isOn && quiet == kWorthALook / kNap) {
            pthread_kill(watched, SIGUSR2);
        }
    }
}

void StallWatch::start() {
    m_last = now();
    m_timer.start(kBeatMs);
    m_isOn = true;
}

void StallWatch::stop() {
    m_isOn = false;
    m_timer.stop();
}

StallWatch::Moment StallWatch::now() const {
    std::array<char, 128> text{};
    unsigned long long ran = 0;
    unsigned long long crowded = 0;
    if (::pread(m_schedule.get(), text.data(), text.size() - 1, 0) > 0) {
        std::sscanf(text.data(), "%llu %llu", &ran, &crowded);
    }
    return {static_cast<double>(m_clock.nsecsElapsed()) / kNanosecondsOfOne,
            static_cast<double>(ran) / kNanosecondsOfOne,
            static_cast<double>(crowded) / kNanosecondsOfOne, m_late};
}

void StallWatch::beat() {
    ++m_beats;
    const Moment moment = now();
    const double gap = moment.wall - m_last.wall;
    if (gap > static_cast<double>(kWorthALook.count())) {
        // If the machine stood still, the other thread is about to say so.
        std::this_thread::sleep_for(2 * kNap);
    }
    const double crowded = std::max(moment.crowded - m_last.crowded, m_late - m_last.late);
    const double processor = moment.processor - m_last.processor;
    keep({.milliseconds = std::max(processor, gap - crowded),
          .processor = processor,
          .crowded = crowded,
          .doing = m_doing,
          .at = moment.wall / 1000,
          .calls = takeCalls()});
    m_last = now();
}

void StallWatch::keep(const Stall &stall) {
    const auto place = std::ranges::find_if(
        m_longest, [&](const Stall &other) { return other.milliseconds < stall.milliseconds; });
    if (place == m_longest.end() && m_longest.size() == kKept) {
        return;
    }
    m_longest.insert(place, stall);
    m_longest.resize(std::min(m_longest.size(), kKept));
}

QString describe(const StallWatch::Stall &stall) {
    QString text =
        QStringLiteral("%1 ms (%2 ms of the processor, %3 ms more for want of one) at %4 s: %5")
            .arg(stall.milliseconds, 0, 'f', 0)
            .arg(stall.processor, 0, 'f', 0)
            .arg(stall.crowded, 0, 'f', 0)
            .arg(stall.at, 0, 'f', 0)
            .arg(stall.doing);
    for (const std::string &call :
         stall.milliseconds < kWorthTheCallsMs ? std::vector<std::string>() : stall.calls) {
        text += QStringLiteral("\n    ") + QString::fromStdString(call);
    }
    return text;
}

}  // namespace quorbel::soak
