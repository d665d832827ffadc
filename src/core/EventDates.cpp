#include "core/EventDates.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorbel {

void EventDates::noteShowing(const AppState &state) {
    const Showing showing = showingFor(state);
    if (m_runs.empty() || m_runs.back().showing != showing) {
        m_runs.push_back({showing, showings()});
    }
    ++m_runs.back().end;
}

std::size_t EventDates::showings() const {
    return m_runs.empty() ? 0 : m_runs.back().end;
}

bool EventDates::lastShowingReRendered() const {
    return !m_runs.empty() && m_runs.back().showing.oldFormat != m_runs.back().showing.newFormat;
}

void EventDates::settle(EventRecord &record, std::uint8_t severityClass,
                        std::optional<std::string> &text) {
    auto run = std::ranges::upper_bound(m_runs, std::size_t{record.showings}, {}, &Run::end);
    for (; run != m_runs.end(); ++run) {
        apply(run->showing, run->end - record.showings, record, text);
        pickImage(run->showing, record, severityClass);
        record.showings = static_cast<std::uint16_t>(run->end);
    }
}

void EventDates::showAtOnce(EventRecord &record, std::uint8_t severityClass, const AppState &state,
                            bool hasDate) {
    const Showing showing = showingFor(state);
    if (hasDate) {
        record.format = showing.newFormat;
    }
    record.showings = static_cast<std::uint16_t>(showings());
    pickImage(showing, record, severityClass);
}

EventDates::FormatId EventDates::formatId(std::string_view setting) {
    const auto known = std::ranges::find(m_formats, setting, &NamedFormat::setting);
    const auto index = known - m_formats.begin();
    if (known == m_formats.end()) {
        m_formats.push_back({std::string(setting), std::make_unique<DateFormat>(setting)});
    }
    return static_cast<FormatId>(index + 1);
}

bool EventDates::isFull() const {
    // One showing names at most two formats.
    return m_formats.size() + 2 >= EventRecord::kTextDate || showings() >= UINT16_MAX;
}

void EventDates::reset() {
    m_formats.clear();
    m_runs.clear();
}

EventDates::Showing EventDates::showingFor(const AppState &state) {
    Showing showing{formatId(state.oldDateFormat), formatId(state.newDateFormat), {}};
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const std::int64_t level = state.*kSeverityClasses[i].level;
        const bool hasImage = !severityLevelName(level).empty();
        showing.levels[i] = static_cast<std::int8_t>(hasImage ? level : -1);
    }
    return showing;
}

void EventDates::apply(const Showing &showing, std::size_t times, EventRecord &record,
                       std::optional<std::string> &text) const {
    const auto date = [&record] { return std::pair(record.format, record.seconds); };
    auto last = date();
    for (std::size_t done = 1; done <= times; ++done) {
        const auto beforeLast = std::exchange(last, date());
        applyOnce(showing, record, text);
        if (date() == last) {
            return;
        }
        if (done > 1 && date() == beforeLast) {
            // Reading a day as a month and back again: from here on it alternates.
            done += (times - done) / 2 * 2;
        }
    }
}

void EventDates::applyOnce(const Showing &showing, EventRecord &record,
                           std::optional<std::string> &text) const {
    if (record.format == EventRecord::kRawDate) {
        record.format = showing.newFormat;
        text.reset();
        return;
    }
    if (showing.oldFormat == showing.newFormat) {
        return;
    }
    std::optional<std::int64_t> moment;
    if (record.format == showing.oldFormat) {
        moment = format(showing.oldFormat).roundTrip(record.seconds);
    } else {
        const bool isText = record.format == EventRecord::kTextDate;
        if (!isText || text) {
            const auto parsed =
                format(showing.oldFormat)
                    .parse(isText
                               ? *text
                               : format(record.format).render(static_cast<double>(record.seconds)));
            if (parsed) {
                moment = static_cast<std::int64_t>(std::floor(*parsed));
            }
        }
    }
    // A date that the old format cannot read stays as it stands.
    if (moment) {
        record.seconds = *moment;
        record.format = showing.newFormat;
        text.reset();
    }
}

void EventDates::pickImage(const Showing &showing, EventRecord &record,
                           std::uint8_t severityClass) {
    if (const std::int8_t level = showing.levels[severityClass]; level >= 0) {
        record.image = static_cast<std::uint8_t>(level + 1) & 3U;
    }
}

}  // namespace quorbel
