#include "core/EventDates.h"

#include "platform/Number.h"
#include "platform/Text.h"

#include <algorithm>
#include <cmath>

namespace quorbel {

namespace {

constexpr std::size_t kMaxPlainDigits = 18;

/// Seconds as the digits that the service writes: no sign, no leading zero, within 64 bits.
std::optional<std::int64_t> plainSeconds(std::string_view text) {
    const bool fits = !text.empty() && text.size() <= kMaxPlainDigits && text.front() != '-';
    if (!fits || (text.front() == '0' && text.size() > 1)) {
        return std::nullopt;
    }
    return readNumber<std::int64_t>(text);
}

}  // namespace

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

void EventDates::settleUpTo(std::size_t showings, EventRecord &record, std::uint8_t severityClass,
                            std::optional<std::string> &text) const {
    auto run = std::ranges::upper_bound(m_runs, std::size_t{record.showings}, {}, &Run::end);
    for (; run != m_runs.end() && record.showings < showings; ++run) {
        // Equal showings one after the other do no more than the first of them.
        apply(run->showing, record, text);
        pickImage(run->showing, record, severityClass);
        record.showings = static_cast<std::uint16_t>(std::min(run->end, showings));
    }
}

void EventDates::showAtOnce(EventRecord &record, std::uint8_t severityClass, const Showing &showing,
                            bool hasDate) const {
    if (hasDate) {
        record.format = showing.newFormat;
    }
    record.showings = static_cast<std::uint16_t>(showings());
    pickImage(showing, record, severityClass);
}

bool EventDates::setAsItCame(EventChunk &chunk, EventRecord &record,
                             const std::optional<std::string_view> &text) {
    const auto plain = text ? plainSeconds(*text) : std::nullopt;
    if (plain) {
        record.seconds = *plain;
    } else if (!text) {
        record.format = EventRecord::kTextDate;
    } else {
        record.format = isAllDecimalDigits(*text) ? EventRecord::kRawDate : EventRecord::kTextDate;
        record.seconds = wholeSeconds(floatingPointValue(*text));
        record.hasExtras = 1;
    }
    chunk.addMoment(record.seconds);
    if (text && record.format == EventRecord::kTextDate) {
        chunk.addMoment(INT64_MIN);  // what a text reads as is not known yet
    }
    return record.hasExtras != 0;
}

std::int64_t EventDates::wholeSeconds(double seconds) {
    constexpr double kLimit = 9e17;
    return static_cast<std::int64_t>(std::floor(std::clamp(seconds, -kLimit, kLimit)));
}

EventDates::FormatId EventDates::formatId(std::string_view setting) {
    const auto isIt = [setting](const NamedFormat &known) {
        return !known.isFree() && known.setting == setting;
    };
    auto known = std::ranges::find_if(m_formats, isIt);
    if (known == m_formats.end()) {
        known = std::ranges::find_if(m_formats, &NamedFormat::isFree);
        if (known == m_formats.end()) {
            known = m_formats.emplace(known);
        }
        *known = {std::string(setting), std::make_unique<DateFormat>(setting)};
        if (!m_minutes) {
            m_minutes = std::make_unique<DateFormat>("y-MM-dd HH:mm");
        }
        m_tellsMinutes = m_tellsMinutes && known->format->tellsMinute();
    }
    return static_cast<FormatId>(known - m_formats.begin() + 1);
}

std::optional<std::int64_t> EventDates::minuteOf(const EventRecord &record) const {
    return record.format == EventRecord::kTextDate ? std::nullopt : minuteOf(record.seconds);
}

std::optional<std::int64_t> EventDates::minuteOf(std::int64_t seconds) const {
    return m_tellsMinutes && DateFormat::isPlain(seconds) ? m_minutes->roundTrip(seconds)
                                                          : std::nullopt;
}

bool EventDates::isFull() const {
    // One showing names at most two formats.
    const auto free = std::ranges::count_if(m_formats, &NamedFormat::isFree);
    return m_formats.size() - static_cast<std::size_t>(free) + 2 >= EventRecord::kTextDate ||
           showings() >= UINT16_MAX;
}

void EventDates::startOver(const FormatsInUse &inUse) {
    m_runs.clear();
    for (std::size_t index = 0; index < m_formats.size(); ++index) {
        if (!inUse[index + 1]) {
            m_formats[index] = {};
        }
    }
}

EventDates::Showing EventDates::showingFor(const AppState &state) {
    Showing showing{formatId(state.oldDateFormat), formatId(state.newDateFormat), {}};
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const std::int64_t level = state.*kSeverityLevels[i];
        const bool hasImage = !severityLevelName(level).empty();
        showing.levels[i] = static_cast<std::int8_t>(hasImage ? level : -1);
    }
    return showing;
}

void EventDates::apply(const Showing &showing, EventRecord &record,
                       std::optional<std::string> &text) const {
    if (record.format == showing.newFormat) {
        return;
    }
    // A date that cannot be read stays as it stands.
    if (const auto moment = momentRead(showing, record, text)) {
        record.seconds = *moment;
        record.format = showing.newFormat;
        text.reset();
    }
}

std::optional<std::int64_t> EventDates::momentRead(const Showing &showing,
                                                   const EventRecord &record,
                                                   const std::optional<std::string> &text) const {
    switch (record.format) {
        case EventRecord::kRawDate:
            return record.seconds;
        case EventRecord::kTextDate:
            if (text && showing.oldFormat != showing.newFormat) {
                if (const auto parsed = format(showing.oldFormat).parse(*text)) {
                    return static_cast<std::int64_t>(std::floor(*parsed));
                }
            }
            return std::nullopt;
        default:
            return format(record.format).roundTrip(record.seconds);
    }
}

void EventDates::pickImage(const Showing &showing, EventRecord &record,
                           std::uint8_t severityClass) {
    if (const std::int8_t level = showing.levels[severityClass]; level >= 0) {
        record.image = static_cast<std::uint8_t>(level + 1) & 3U;
    }
}

}  // namespace quorbel
