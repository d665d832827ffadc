#pragma once

#include "core/ArrangedEvents.h"
#include "core/EventGroups.h"
#include "core/EventReader.h"
#include "core/TimeCounts.h"

#include <cstddef>
#include <functional>
#include <optional>

namespace quorbel {

/// When the arranged events happened, and in which groups: how they are rated, or others.
///
/// Single arrivals and removals are followed at once. After larger changes all are counted anew, in
/// slices: until that is done, the counts from before stand. Dates that are text nobody could read,
/// or far from any calendar, count nowhere. Main thread only.
class EventTimes : private EventListObserver {
public:
    /// Observes the events, which outlive this. Nothing is counted yet.
    explicit EventTimes(ArrangedEvents &events, EventGroups groups = {});
    ~EventTimes() override;
    EventTimes(const EventTimes &) = delete;
    EventTimes &operator=(const EventTimes &) = delete;

    [[nodiscard]] const EventGroups &groups() const { return m_groups; }
    [[nodiscard]] const TimeCounts &counts() const { return m_counts; }
    /// Whether the counts are not, or not quite, those of the events now.
    [[nodiscard]] bool isCounting() const { return m_isBehind; }
    /// Counts on until all is counted or `isTimeUp`, asked about every tenth of a millisecond.
    void count(const std::function<bool()> &isTimeUp);
    /// To be called when dates or ratings may have changed: counts anew.
    void recount();

private:
    void rowsWillBeInsertedAtTop(std::size_t) override {}
    void rowsWereInserted(std::size_t count) override;
    void rowsWillBeRemoved(std::size_t first, std::size_t count) override;
    void rowsWereRemoved() override {}
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override;

    [[nodiscard]] TimeCounts &followed() { return m_isBehind ? m_fresh : m_counts; }
    [[nodiscard]] const EventRecord &recordOf(EventId id) const;
    void add(const EventRecord &record);
    void recountSoon();
    [[nodiscard]] bool countRun();
    [[nodiscard]] bool countMatchingRun();
    void finish();

    ArrangedEvents &m_events;
    EventReader m_reader;
    EventGroups m_groups;
    TimeCounts m_counts;
    EventQuery m_filter;       // the one whose events are counted
    TimeCounts m_fresh;        // what takes the counts' place when it is complete
    EventId m_next = 1;        // all before it are counted
    bool m_isBehind = true;    // whether m_fresh is being filled
    bool m_isOverdue = false;  // whether it has missed something
};

}  // namespace quorbel
