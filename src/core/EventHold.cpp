#include "core/EventHold.h"

#include "core/LoadedEvents.h"
#include "core/PageLinks.h"

#include <utility>

namespace quorbel {

void EventHold::setOn(bool on) {
    m_isOn = on;
    changed();
}

void EventHold::changed() {
    for (EventHoldObserver *observer : m_observers) {
        observer->holdChanged();
    }
}

EventPlace EventHold::take(const EventFields &event, EventListPageLink &page) {
    return delays() ? EventPlace{m_waiting, addArrival(event)}
                    : EventPlace{m_list, list(event, page)};
}

bool EventHold::canListMany(const EventListPageLink &page) const {
    return !delays() && page.canInsertMany();
}

void EventHold::listMany(LoadedEvents events, EventListPageLink &page) {
    page.isOnScreen() ? page.insertEvents(std::move(events))
                      : m_list.insertAllRaw(std::move(events));
}

EventId EventHold::list(const EventFields &event, EventListPageLink &page) {
    return page.isOnScreen() ? page.insertEvent(event) : m_list.insertRaw(event);
}

EventId EventHold::addArrival(const EventFields &event) {
    add(event, false);
    return m_waiting.idAt(0);
}

void EventHold::addRemoval(const EventFields &announced) {
    ++m_removals;
    add(announced, true);
}

void EventHold::add(const EventFields &notice, bool isRemoval) {
    const EventId id = m_waiting.insertRaw(notice);
    if (m_waiting.size() == 1) {
        m_isRemoval.clear();
        m_firstId = id;
    }
    m_isRemoval.push_back(isRemoval);
    changed();
}

void EventHold::release(std::chrono::milliseconds limit, EventListPageLink &page) {
    const auto end = std::chrono::steady_clock::now() + limit;
    const std::size_t before = m_waiting.size();
    std::size_t left = before;
    while (left > 0) {
        handOn(--left, page);
        if (std::chrono::steady_clock::now() >= end) {
            break;
        }
    }
    if (left < before) {
        m_waiting.removeRows({{left, before - left}});
        changed();
    }
}

void EventHold::forget() {
    if (m_waiting.size() > 0) {
        m_waiting.removeRows({{0, m_waiting.size()}});
    }
    m_removals = 0;
    changed();
}

void EventHold::handOn(std::size_t row, EventListPageLink &page) {
    const auto date = m_waiting.date(row);
    const auto others = m_waiting.others(row);
    const EventFields notice{date, m_waiting.priority(row), m_waiting.host(row),
                             m_waiting.message(row), others};
    const EventId id = m_waiting.idAt(row);
    if (m_isRemoval[id - m_firstId]) {
        --m_removals;
        page.removeEvent(notice);
    } else {
        m_waiting.leadOn(id, m_list, list(notice, page));
    }
}

}  // namespace quorbel
