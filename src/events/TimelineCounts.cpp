#include "events/TimelineCounts.h"

namespace quorbel {

TimelineCounts::TimelineCounts(ArrangedEvents &events)
    : m_events(events), m_all(events.list()), m_allTimes(m_all) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &TimelineCounts::look);
    m_events.addObserver(*this);
    m_all.addObserver(*this);
    lookIn(0);
}

TimelineCounts::~TimelineCounts() {
    m_events.removeObserver(*this);
    m_all.removeObserver(*this);
}

const TimeCounts *TimelineCounts::matching() const {
    return m_events.isFiltered() && m_isMatchingCounted ? &m_matchingTimes->counts() : nullptr;
}

void TimelineCounts::listChangedAtLarge() {
    // What changes again and again is not counted again and again.
    const bool isRecent = m_sinceCounted.isValid() && m_sinceCounted.elapsed() < kPause;
    lookIn(isRecent ? kPause : 0);
}

void TimelineCounts::lookIn(int milliseconds) {
    if (milliseconds == 0 || !m_timer.isActive()) {
        m_timer.start(milliseconds);
    }
}

void TimelineCounts::look() {
    followFilter();
    QElapsedTimer time;
    time.start();
    const auto isTimeUp = [&time] { return time.elapsed() >= kSliceMilliseconds; };
    m_allTimes.count(isTimeUp);
    if (m_matchingTimes && !isTimeUp()) {
        m_matchingTimes->count(isTimeUp);
        m_isMatchingCounted = m_isMatchingCounted || !m_matchingTimes->isCounting();
    }
    if (m_allTimes.isCounting() || (m_matchingTimes && m_matchingTimes->isCounting())) {
        lookIn(0);
        return;
    }
    m_sinceCounted.start();
    Q_EMIT changed();
}

void TimelineCounts::followFilter() {
    if (!m_events.isFiltered()) {
        m_matchingTimes.reset();
        m_isMatchingCounted = false;
    } else if (!m_matchingTimes) {
        m_matchingTimes = std::make_unique<EventTimes>(m_events);
    }
}

}  // namespace quorbel
