#pragma once

#include "core/Event.h"
#include "core/EventList.h"

#include <chrono>
#include <cstddef>
#include <vector>

namespace quorbel {

class EventListPageLink;
class LoadedEvents;

/// Hears of each change of what waits, and of whether it has to.
class EventHoldObserver {
public:
    virtual ~EventHoldObserver() = default;
    virtual void holdChanged() = 0;

protected:
    EventHoldObserver() = default;
    EventHoldObserver(const EventHoldObserver &) = default;
    EventHoldObserver &operator=(const EventHoldObserver &) = default;
};

/// Keeps the event list as it is while the user reads: events that arrive and removals that are
/// announced wait here, in their order, and are handed on when the user lets the list go on. What
/// is new while some still wait goes behind them. Main thread only.
///
/// What waits is kept packed as in the list, an event as long as it is raw: 24 bytes and its
/// message. Whoever holds an event that waits sees the list's own from when it was handed on.
class EventHold {
public:
    /// `list` is where events go in the end. It outlives the hold, as it is.
    explicit EventHold(EventList &list) : m_list(list) {}

    void setOn(bool on);
    [[nodiscard]] bool isOn() const { return m_isOn; }
    /// Whether what is new has to wait.
    [[nodiscard]] bool delays() const { return m_isOn || m_waiting.size() > 0; }

    // How many wait.
    [[nodiscard]] std::size_t arrivals() const { return m_waiting.size() - m_removals; }
    [[nodiscard]] std::size_t removals() const { return m_removals; }

    /// Lists an event, as any that arrives: through the page while that is on screen, else into the
    /// list as it is. While it has to wait it is among waiting(). Says where it is.
    EventPlace take(const EventFields &event, EventListPageLink &page);
    /// Whether many events can be listed with one step: none has to wait, and the page is quick.
    [[nodiscard]] bool canListMany(const EventListPageLink &page) const;
    /// Lists many events as take() would each while nothing has to wait, whether it has to or not.
    void listMany(LoadedEvents events, EventListPageLink &page);
    /// An event that has to wait. The id is one of waiting().
    EventId addArrival(const EventFields &event);
    void addRemoval(const EventFields &announced);
    /// What waits, newest first; removals are records like events.
    [[nodiscard]] EventList &waiting() { return m_waiting; }

    /// Hands the oldest on, in their order, for about `limit`, and at least one if any wait: events
    /// as if each arrived now, removals through the page.
    void release(std::chrono::milliseconds limit, EventListPageLink &page);

    /// Forgets all that waits.
    void forget();

    /// Each outlives the hold or is removed before it ends.
    void addObserver(EventHoldObserver &observer) { m_observers.push_back(&observer); }
    void removeObserver(EventHoldObserver &observer) { std::erase(m_observers, &observer); }

private:
    void add(const EventFields &notice, bool isRemoval);
    void handOn(std::size_t row, EventListPageLink &page);
    EventId list(const EventFields &event, EventListPageLink &page);
    void changed();

    EventList &m_list;
    EventList m_waiting;
    std::vector<bool> m_isRemoval;  // by id, from the first one that came when none waited
    EventId m_firstId = 0;
    std::size_t m_removals = 0;
    bool m_isOn = false;
    std::vector<EventHoldObserver *> m_observers;
};

}  // namespace quorbel
