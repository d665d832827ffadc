#include "core/EventIntake.h"

#include "common/LogReader.h"
#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "core/AppDelegate.h"
#include "core/EventHold.h"
#include "core/EventList.h"
#include "platform/Text.h"

#include <bit>
#include <string>

namespace quorbel {

namespace {

/// A line's fields as text. A field that is not UTF-8 is absent, and so are those after it.
EventFields decodeFields(const LogLine &line) {
    // The separators are ASCII, so that what is UTF-8 as a whole is so field by field.
    if (isUtf8({line.date.data(), line.message.end()})) {
        return {line.date, line.priority, line.host, line.message, {}};
    }
    EventFields fields;
    if (!isUtf8(line.date)) {
        return fields;
    }
    fields.date = line.date;
    if (!isUtf8(line.priority)) {
        return fields;
    }
    fields.priority = line.priority;
    if (!isUtf8(line.host)) {
        return fields;
    }
    fields.host = line.host;
    if (isUtf8(line.message)) {
        fields.message = line.message;
    }
    return fields;
}

}  // namespace

EventIntake::EventIntake(AppState &state, EventList &events, EventHold &hold,
                         EventListPageLink &page, HomePageLink &home)
    : m_state(state), m_events(events), m_hold(hold), m_eventPage(page), m_homePage(home) {}

void EventIntake::count(const PriorityClasses &classes) {
    for (unsigned long rest = classes.counted.to_ulong(); rest != 0; rest &= rest - 1) {
        ++(m_state.*kSeverityCounters[static_cast<std::size_t>(std::countr_zero(rest))]);
    }
}

EventPlace EventIntake::listOrHold(const EventFields &event) {
    if (m_hold.delays()) {
        return {m_hold.waiting(), m_hold.addArrival(event)};
    }
    return {m_events,
            m_eventPage.isOnScreen() ? m_eventPage.insertEvent(event) : m_events.insertRaw(event)};
}

EventPlace EventIntake::setNotification(const EventFields &event) {
    const EventPlace place = listOrHold(event);
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

void EventIntake::takeSettings() {
    const auto document = decodeSettings(AppDelegate::readSettings());
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityClass &severity = kSeverityClasses[i];
        m_state.*kSeverityLevels[i] =
            document ? settingInteger(*document, "severity" + std::string(severity.keyPart))
                     : severity.defaultLevel;
    }
    const Dictionary settings = document.value_or(Dictionary{});
    m_state.iPopupEvents = settingInteger(settings, "popupEvents");
    m_state.newDateFormat = settingText(settings, "dateFormat").value_or("");
    m_state.oldDateFormat = m_state.newDateFormat;
    m_state.popupSound = settingText(settings, "popupSound").value_or("");
    m_state.popupDisplayArray = settingTexts(settings, "popupDisplayArray");
    m_state.popupPlayArray = settingTexts(settings, "popupPlayArray");
}

void EventIntake::initializeLog(const Progress &onProgress) {
    for (const auto counter : kSeverityCounters) {
        m_state.*counter = 0;
    }
    takeSettings();

    const auto files = logFiles();
    const std::uint64_t total = totalSize(files);
    std::uint64_t read = 0;
    m_events.beginBulkInsert();
    for (const auto &file : files) {
        LogReader::readFile(
            file,
            [this](const LogLine &line) {
                setNotification(decodeFields(line));
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
