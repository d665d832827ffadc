#include "service/input/PacedSource.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <ctime>
#include <utility>

namespace quorbel {

PacedSource::PacedSource(sd_event *loop, int fd, Read read, std::chrono::microseconds rest)
    : m_read(std::move(read)),
      m_rest(rest),
      m_timer(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)),
      m_source(required(watchInput(loop, fd, onReadable, this))),
      m_timerSource(watchInput(loop, m_timer.get(), onTime, this)) {}

int PacedSource::onReadable(sd_event_source * /*source*/, int /*fd*/, std::uint32_t /*events*/,
                            void *self) {
    static_cast<PacedSource *>(self)->readAtOnce();
    return 0;
}

int PacedSource::onTime(sd_event_source * /*source*/, int /*fd*/, std::uint32_t /*events*/,
                        void *self) {
    static_cast<PacedSource *>(self)->readAfterRest();
    return 0;
}

void PacedSource::readAtOnce() {
    std::uint64_t now = 0;
    sd_event_now(sd_event_source_get_event(m_source.get()), CLOCK_MONOTONIC, &now);
    const auto since = std::chrono::microseconds(now - std::exchange(m_lastReading, now));
    const bool isQuick = m_read() < kEnough && since <= m_rest;
    m_quickReadings = isQuick ? m_quickReadings + 1 : 0;
    if (m_quickReadings >= kQuickReadings && m_timerSource) {
        beginRest();
    }
}

void PacedSource::readAfterRest() {
    // Nothing is there when the event is one from before the rest ended.
    std::uint64_t expirations = 0;
    if (::read(m_timer.get(), &expirations, sizeof expirations) < 0) {
        return;
    }
    const std::size_t count = m_read();
    if (count == 0 || count >= kEnough) {
        endRest();
    }
}

void PacedSource::beginRest() {
    if (setTimer(m_rest)) {
        m_isResting = sd_event_source_set_enabled(m_source.get(), SD_EVENT_OFF) >= 0;
    }
}

void PacedSource::endRest() {
    m_quickReadings = 0;
    // Where there is no room to watch it just now, the timer goes on in its place.
    if (sd_event_source_set_enabled(m_source.get(), SD_EVENT_ON) >= 0) {
        m_isResting = false;
        setTimer({});
    }
}

bool PacedSource::setTimer(std::chrono::nanoseconds interval) {
    itimerspec time{};
    time.it_interval.tv_nsec = interval.count();
    time.it_value = time.it_interval;
    return ::timerfd_settime(m_timer.get(), 0, &time, nullptr) == 0;
}

}  // namespace quorbel
