#include "core/EventIntake.h"

#include "common/Severity.h"
#include "core/ArrivalObserver.h"
#include "core/EventHold.h"
#include "core/EventList.h"
#include "core/LogLoad.h"
#include "core/StartSettings.h"
#include "platform/Number.h"

#include <algorithm>
#include <bit>
#include <ctime>
#include <utility>

namespace quorbel {

namespace {

/// Adds how far the next part of a file was read: of one that was read already, or a new one.
void addExtent(std::vector<LogExtent> &extents, LogExtent part) {
    if (extents.empty() || extents.back().file != part.file) {
        extents.push_back(std::move(part));
        return;
    }
    LogExtent &whole = extents.back();
    whole.bytes = std::max(whole.bytes, part.bytes);
    whole.lines = std::max(whole.lines, part.lines);
    whole.pieces += part.pieces;
}

}  // namespace

EventIntake::EventIntake(AppState &state, EventList &events, EventHold &hold,
                         EventListPageLink &page, HomePageLink &home)
    : m_state(state), m_events(events), m_hold(hold), m_eventPage(page), m_homePage(home) {}

void EventIntake::count(const PriorityClasses &classes, std::optional<std::string_view> date) {
    for (unsigned long rest = classes.counted.to_ulong(); rest != 0; rest &= rest - 1) {
        ++(m_state.*kSeverityCounters[static_cast<std::size_t>(std::countr_zero(rest))]);
    }
    if (const auto seconds = readNumber<std::int64_t>(date.value_or(""))) {
        m_state.arrivals.add(classes.counted, *seconds, std::time(nullptr));
    }
}

void EventIntake::count(const LoadedArrivals &arrivals) {
    const auto counts = arrivals.events.countByClass();
    for (std::size_t i = 0; i < counts.size(); ++i) {
        m_state.*kSeverityCounters.at(i) += static_cast<std::int64_t>(counts.at(i));
    }
    m_state.arrivals.add(arrivals.byHour);
}

EventPlace EventIntake::setNotification(const EventFields &event) {
    const EventPlace place = m_hold.take(event, m_eventPage);
    const PriorityClasses &classes = place.list.classes(0);
    count(classes, event.date);
    for (ArrivalObserver *observer : m_observers) {
        observer->eventArrived(event, classes.shown);
    }
    noteForHomePage();
    return place;
}

bool EventIntake::canTakeMany() const {
    return m_hold.canListMany(m_eventPage);
}

EventPlace EventIntake::takeMany(LoadedArrivals arrivals) {
    if (!canTakeMany()) {
        return takeEach(arrivals.events);
    }
    const EventPlace place{m_events, m_events.nextId()};
    count(arrivals);
    for (ArrivalObserver *observer : m_observers) {
        observer->eventsArrived(arrivals.events);
    }
    m_hold.listMany(std::move(arrivals.events), m_eventPage);
    noteForHomePage();
    return place;
}

/// The list is held since they were loaded, or the page has become slow.
EventPlace EventIntake::takeEach(const LoadedEvents &events) {
    EventList &list = m_hold.delays() ? m_hold.waiting() : m_events;
    const EventPlace place{list, list.nextId()};
    events.visitFields([this](const EventFields &fields) { setNotification(fields); });
    return place;
}

void EventIntake::noteForHomePage() {
    if (m_isAmongMany) {
        m_isHomeDue = true;
    } else {
        tellHomePage();
    }
}

void EventIntake::removeNotification(const EventFields &announced) {
    if (m_hold.delays()) {
        m_hold.addRemoval(announced);
    } else {
        m_eventPage.removeEvent(announced);
    }
}

void EventIntake::resetCounters() {
    for (const auto counter : kSeverityCounters) {
        m_state.*counter = 0;
    }
    m_state.arrivals = {};
}

void EventIntake::beginAnew() {
    resetCounters();
    m_hold.forget();
    m_events.removeMarked();
    if (m_events.size() > 0) {
        m_events.removeRows({{0, m_events.size()}});
    }
    for (ArrivalObserver *observer : m_observers) {
        observer->logBeginsAnew();
    }
}

void EventIntake::takeLogged(const EventFields &event) {
    // Past the hold, which would keep an empty list.
    const bool isOnScreen = m_eventPage.isOnScreen();
    isOnScreen ? m_eventPage.insertEvent(event) : m_events.insertRaw(event);
    count(m_events.classes(0), event.date);
}

void EventIntake::takeLogged(LoadedArrivals logged) {
    if (m_eventPage.canInsertMany()) {
        count(logged);
        m_hold.listMany(std::move(logged.events), m_eventPage);
    } else {
        logged.events.visitFields([this](const EventFields &fields) { takeLogged(fields); });
    }
}

void EventIntake::endAnew() {
    for (ArrivalObserver *observer : m_observers) {
        observer->logWasLoaded();
    }
    tellHomePage();
}

void EventIntake::tellHomePage() {
    if (m_homePage.isOnScreen()) {
        m_homePage.setEventsStatus();
    }
}

void EventIntake::endMany() {
    m_isAmongMany = false;
    if (std::exchange(m_isHomeDue, false)) {
        tellHomePage();
    }
}

std::vector<LogExtent> EventIntake::initializeLog(const Progress &onProgress,
                                                  const LogLoad::Shares &shares) {
    resetCounters();
    takeStartSettings(m_state);

    LogLoad load(logFiles(), std::time(nullptr), shares);
    std::vector<LogExtent> extents;
    m_events.beginBulkInsert();
    while (auto batch = load.next([&](std::uint64_t read) {
        if (onProgress) {
            onProgress(read, load.total());
        }
    })) {
        count(batch->loaded);
        m_events.insertAllRaw(std::move(batch->loaded.events));
        for (LogExtent &extent : batch->extents) {
            addExtent(extents, std::move(extent));
        }
    }
    m_events.endBulkInsert();
    for (ArrivalObserver *observer : m_observers) {
        observer->logWasLoaded();
    }
    return extents;
}

}  // namespace quorbel
