#include "soak/StallWatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace quorbel::soak {

namespace {

constexpr int kBeatMs = 5;
constexpr double kNanosecondsOfOne = 1e6;
constexpr std::size_t kKept = 10;

}  // namespace

StallWatch::StallWatch() : m_schedule(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {
    m_clock.start();
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &StallWatch::beat);
    start();
}

void StallWatch::start() {
    m_last = now();
    m_timer.start(kBeatMs);
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
            static_cast<double>(crowded) / kNanosecondsOfOne};
}

void StallWatch::beat() {
    const Moment moment = now();
    const double crowded = moment.crowded - m_last.crowded;
    keep({.milliseconds = std::max(0.0, moment.wall - m_last.wall - crowded),
          .processor = moment.processor - m_last.processor,
          .crowded = crowded,
          .doing = m_doing,
          .at = moment.wall / 1000});
    m_last = moment;
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
    return QStringLiteral("%1 ms (%2 ms of the processor, %3 ms more for want of one) at %4 s: %5")
        .arg(stall.milliseconds, 0, 'f', 0)
        .arg(stall.processor, 0, 'f', 0)
        .arg(stall.crowded, 0, 'f', 0)
        .arg(stall.at, 0, 'f', 0)
        .arg(stall.doing);
}

}  // namespace quorbel::soak
