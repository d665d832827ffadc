#include "core/EventIntake.h"

#include "common/LogReader.h"
#include "common/Severity.h"
#include "core/EventHold.h"
#include "core/EventList.h"
#include "core/LogFields.h"
#include "core/StartSettings.h"

#include <bit>

namespace quorbel {

EventIntake::EventIntake(AppState &state, EventList &events, EventHold &hold,
                         EventListPageLink &page, HomePageLink &home)
    : m_state(state), m_events(events), m_hold(hold), m_eventPage(page), m_homePage(home) {}

void EventIntake::count(const PriorityClasses &classes) {
    for (unsigned long rest = classes.counted.to_ulong(); rest != 0; rest &= rest - 1) {
        ++(m_state.*kSeverityCounters[static_cast<std::size_t>(std::countr_zero(rest))]);
    }
}

EventPlace EventIntake::setNotification(const EventFields &event) {
    const EventPlace place = m_hold.take(event, m_eventPage);
    count(place.list.classes(0));
    if (m_homePage.isOnScreen()) {
        m_homePage.setEventsStatus();
    }
    return place;
}

void EventIntake::removeNotification(const EventFields &announced) {
    if (m_hold.delays()) {
        m_hold.addRemoval(announced);
    } else {
        m_eventPage.removeEvent(announced);
    }
}

void EventIntake::initializeLog(const Progress &onProgress) {
    for (const auto counter : kSeverityCounters) {
        m_state.*counter = 0;
    }
    takeStartSettings(m_state);

    const auto files = logFiles();
    const std::uint64_t total = totalSize(files);
    std::uint64_t read = 0;
    m_events.beginBulkInsert();
    for (const auto &file : files) {
        LogReader::readFile(
            file,
            [this](const LogLine &line) {
                setNotification(fieldsOf(line));
                return true;
            },
            [&](std::size_t bytes) {
                read += bytes;
                if (onProgress) {
                    onProgress(read, total);
                }
                return true;
            });
    }
    m_events.endBulkInsert();
}

}  // namespace quorbel
