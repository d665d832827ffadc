#include "events/timeline/TimelineCounts.h"

#include <utility>

namespace quorbel {

namespace {

/// The part of all events that, leaving at once, may change which groups are the largest.
constexpr std::size_t kManyLeave = 100;

}  // namespace

TimelineCounts::TimelineCounts(ArrangedEvents &events, EventGrouping grouping)
    : m_events(events), m_all(events.list()), m_allTimes(m_all), m_groups(grouping, events.list()) {
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

void TimelineCounts::Times::begin(ArrangedEvents &events, const EventGroups &groups) {
    if (!times) {
        times = std::make_unique<EventTimes>(events, groups);
    }
}

bool TimelineCounts::Times::count(const std::function<bool()> &isTimeUp) {
    if (times && !isTimeUp()) {
        times->count(isTimeUp);
        areCounted = areCounted || !times->isCounting();
    }
    return !times || !times->isCounting();
}

const TimeCounts *TimelineCounts::matching() const {
    return m_events.isFiltered() ? m_matching.counts() : nullptr;
}

const TimeCounts *TimelineCounts::allInGroups() const {
    return m_groups.grouping() == EventGrouping::kRating ? &all() : m_allInGroups.counts();
}

const TimeCounts *TimelineCounts::matchingInGroups() const {
    if (m_groups.grouping() == EventGrouping::kRating) {
        return matching();
    }
    return m_events.isFiltered() ? m_matchingInGroups.counts() : nullptr;
}

void TimelineCounts::rowsWillBeRemoved(std::size_t /*first*/, std::size_t count) {
    m_mayHaveNewGroups = m_mayHaveNewGroups || count >= m_events.list().size() / kManyLeave;
}

void TimelineCounts::listChangedAtLarge() {
    m_mayHaveNewGroups = true;
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
    followGroups();
    followFilter();
    QElapsedTimer time;
    time.start();
    const auto isTimeUp = [&time] { return time.elapsed() >= kSliceMilliseconds; };
    m_allTimes.count(isTimeUp);
    bool isDone = !m_allTimes.isCounting();
    for (Times *times : {&m_matching, &m_allInGroups, &m_matchingInGroups}) {
        isDone = times->count(isTimeUp) && isDone;
    }
    if (!isDone) {
        lookIn(0);
        return;
    }
    m_sinceCounted.start();
    Q_EMIT changed();
}

void TimelineCounts::followGroups() {
    if (m_groups.grouping() == EventGrouping::kRating) {
        return;
    }
    // Few events hardly change what is most frequent, unless there was little before.
    if (std::exchange(m_mayHaveNewGroups, false) || m_groups.names().size() < kRatingCount - 1) {
        if (EventGroups now(m_groups.grouping(), m_events.list()); now != m_groups) {
            m_groups = std::move(now);
            m_allInGroups.end();
            m_matchingInGroups.end();
        }
    }
    m_allInGroups.begin(m_all, m_groups);
}

void TimelineCounts::followFilter() {
    if (!m_events.isFiltered()) {
        m_matching.end();
        m_matchingInGroups.end();
        return;
    }
    m_matching.begin(m_events, {});
    if (m_groups.grouping() != EventGrouping::kRating) {
        m_matchingInGroups.begin(m_events, m_groups);
    }
}

}  // namespace quorbel
