#pragma once

#include "core/EventList.h"
#include "core/EventReader.h"

#include <cstddef>
#include <functional>

namespace quorbel {

/// Looks at each event of a list once, from the oldest to the newest, in slices, and later at those
/// that have come since. What is made of them is a class derived from it. Main thread only.
class EventPass : private EventListObserver {
public:
    ~EventPass() override;
    EventPass(const EventPass &) = delete;
    EventPass &operator=(const EventPass &) = delete;

    /// Begins anew, at the oldest event.
    void restart();
    /// Whether events have left the list since it began, so that what was made of them is wrong;
    /// run() does nothing then.
    [[nodiscard]] bool isStale() const { return m_isStale; }
    /// Whether run() has work to do.
    [[nodiscard]] bool isRunning() const { return !m_isStale && m_next < m_reader.endOfIds(); }
    /// Goes on until all events are looked at or `isTimeUp`, asked about every tenth of a
    /// millisecond.
    void run(const std::function<bool()> &isTimeUp);
    /// How many events the list holds.
    [[nodiscard]] std::size_t listed() const { return m_list.size(); }

protected:
    /// Observes the list, which outlives this.
    explicit EventPass(EventList &list);

    [[nodiscard]] const EventReader &reader() const { return m_reader; }

private:
    /// Forgets what was made of the events.
    virtual void clear() = 0;
    /// Looks at the events at the positions from `first` up to `last` of a chunk.
    virtual void look(EventChunk &chunk, std::size_t first, std::size_t last) = 0;

    void rowsWillBeInsertedAtTop(std::size_t) override {}
    void rowsWereInserted(std::size_t) override {}
    void rowsWillBeRemoved(std::size_t, std::size_t) override {}
    void rowsWereRemoved() override { m_isStale = true; }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override { m_isStale = true; }

    EventList &m_list;
    EventReader m_reader;
    EventId m_next = 0;
    bool m_isStale = false;
};

}  // namespace quorbel
