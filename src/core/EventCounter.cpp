#include "core/EventCounter.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quorbel {

EventCounter::EventCounter(EventList &list) : m_list(list), m_reader(list) {
    m_list.addObserver(*this);
}

EventCounter::~EventCounter() {
    m_list.removeObserver(*this);
}

void EventCounter::start(const std::vector<EventQuery> &filters) {
    m_counts.clear();
    m_matches.clear();
    m_matches.shrink_to_fit();
    m_isStale = false;
    m_counts.reserve(filters.size());
    for (const EventQuery &filter : filters) {
        m_counts.push_back({filter});
    }
}

void EventCounter::replace(std::size_t filter, const EventQuery &by) {
    Count &count = m_counts[filter];
    count.filter = by;
    count.matcher.reset();
    count.progress.restart();
    count.count = 0;
}

void EventCounter::restart() {
    m_isStale = false;
    for (Count &count : m_counts) {
        count.progress.restart();
        count.count = 0;
    }
}

void EventCounter::invalidate() {
    m_isStale = true;
    for (Count &count : m_counts) {
        if (count.matcher) {
            count.matcher->forgetTexts();
        }
    }
}

bool EventCounter::isCounting() const {
    return std::ranges::any_of(m_counts, [end = m_reader.endOfIds()](const Count &count) {
        return !count.shown || count.progress.next() < end;
    });
}

void EventCounter::run(const std::function<bool()> &isTimeUp) {
    for (Count &count : m_counts) {
        bool hasMore = !count.shown || count.progress.next() < m_reader.endOfIds();
        while (hasMore) {
            const auto start = std::chrono::steady_clock::now();
            hasMore = countRun(count);
            count.progress.adjust(std::chrono::steady_clock::now() - start);
            if (isTimeUp()) {
                return;
            }
        }
    }
}

bool EventCounter::countRun(Count &count) {
    if (!count.matcher) {
        count.matcher.emplace(m_list, count.filter);
        return true;
    }
    m_matches.clear();
    if (!count.progress.matchRun(m_reader, *count.matcher, m_positions, m_matches)) {
        count.shown = count.count;
        return false;
    }
    count.count += static_cast<std::size_t>(std::ranges::count_if(
        m_matches, [&](EventMatch match) { return count.filter.meansRating(match.rating()); }));
    return true;
}

}  // namespace quorbel
