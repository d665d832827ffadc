#pragma once

#include "core/EventList.h"
#include "core/EventMatcher.h"
#include "core/EventQuery.h"
#include "core/SearchProgress.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace quorbel {

/// Counts how many events of a list each of several filters means, one filter after the other, in
/// slices. Main thread only.
///
/// What arrives is counted on the way. When events leave the list or are rated anew, the numbers
/// stand until they are counted again.
class EventCounter : private EventListObserver {
public:
    /// Observes the list, which outlives this.
    explicit EventCounter(EventList &list);
    ~EventCounter() override;
    EventCounter(const EventCounter &) = delete;
    EventCounter &operator=(const EventCounter &) = delete;

    /// Begins with other filters, whose expressions are good. None to stop, which frees all memory.
    void start(const std::vector<EventQuery> &filters);
    /// Counts another filter in place of one, whose number stands meanwhile.
    void replace(std::size_t filter, const EventQuery &by);
    /// Counts anew. The numbers stand meanwhile.
    void restart();
    /// Nothing while the filter has not been counted once.
    [[nodiscard]] std::optional<std::size_t> count(std::size_t filter) const {
        return m_counts[filter].shown;
    }
    /// Whether run() has work to do.
    [[nodiscard]] bool isCounting() const;
    /// Whether restart() would give other numbers, perhaps.
    [[nodiscard]] bool isStale() const { return m_isStale; }
    /// Counts on until all is counted or `isTimeUp`, asked about every millisecond.
    void run(const std::function<bool()> &isTimeUp);

private:
    struct Count {
        EventQuery filter;
        std::optional<EventMatcher> matcher{};  // made when it is needed, which takes a while
        std::size_t count = 0;
        std::optional<std::size_t> shown{};
        SearchProgress progress{};
    };

    void rowsWillBeInsertedAtTop(std::size_t) override {}
    void rowsWereInserted(std::size_t) override {}
    void rowsWillBeRemoved(std::size_t, std::size_t) override {}
    void rowsWereRemoved() override { invalidate(); }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override { invalidate(); }

    void invalidate();
    bool countRun(Count &count);

    EventList &m_list;
    EventReader m_reader;
    std::vector<Count> m_counts;
    EventMatcher::Positions m_positions;  // of a run; kept for their memory, as are the matches
    std::vector<EventMatch> m_matches;
    bool m_isStale = false;
};

}  // namespace quorbel
