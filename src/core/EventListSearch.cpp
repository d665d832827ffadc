// Finding the row that a removal notice means.

#include "core/EventList.h"
#include "platform/Text.h"

#include <algorithm>
#include <limits>

namespace quorbel {

namespace {

/// How many look-up tables one search may build. Where it needs more, it reads record by record, so
/// that no single search takes long.
constexpr std::size_t kTablesPerSearch = 8;

std::size_t mix(std::size_t hash, std::size_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 32U);
}

/// The look-up key of an event's fields. Two events that read alike have the same one.
std::size_t fieldsKey(StringTable::Id priority, StringTable::Id host, std::string_view message) {
    return mix(mix(hashBytes(message), priority), host);
}

/// Whether the chunk may hold events whose minute is not known.
bool holdsOddMoments(const EventChunk &chunk) {
    return !DateFormat::isPlain(chunk.earliest()) || !DateFormat::isPlain(chunk.latest());
}

/// The key of an event whose minute is known.
std::size_t keyWithMinute(std::size_t fields, std::int64_t minute) {
    return mix(mix(fields, 1), static_cast<std::size_t>(minute));
}

}  // namespace

/// What is looked for.
struct EventList::Search {
    StringTable::Id priority;
    StringTable::Id host;
    std::string_view message;
    double seconds;
    std::int64_t wholeSeconds;
    EventDates::FormatId textFormat;  ///< for dates that came as text
    std::optional<std::int64_t> minute;
    DateFormat::Span span;  ///< no event outside can match
    std::size_t fieldsKey;
    std::size_t tablesToBuild = kTablesPerSearch;
};

// An event's key stays the same for as long as it is listed, whatever it is shown in: a format that
// tells the minute keeps it, and where a minute came to be known later, the key without it is
// looked for as well.
std::size_t EventList::indexKey(const Place &place) const {
    const EventRecord &record = place.record();
    const std::size_t fields = fieldsKey(record.priority, record.host,
                                         place.chunk->message(record).value_or(std::string_view()));
    const auto minute = m_dates.minuteOf(record);
    return minute ? keyWithMinute(fields, *minute) : fields;
}

void EventList::buildIndex(EventChunk &chunk) const {
    chunk.startIndex();
    for (std::size_t position = 0; position < chunk.size(); ++position) {
        chunk.addToIndex(indexKey({&chunk, position}), position);
    }
}

std::optional<std::size_t> EventList::find(const EventFields &announced,
                                           std::string_view dateFormat) {
    const auto priority =
        announced.priority ? m_priorities.find(*announced.priority) : std::nullopt;
    const auto host = announced.host ? m_hosts.find(*announced.host) : std::nullopt;
    if (!priority || !host || !announced.message) {
        return std::nullopt;
    }
    Search search = searchFor(announced, *priority, *host, dateFormat);
    if (m_indexHasMinutes && !m_dates.tellsMinutes()) {
        m_indexHasMinutes = false;
        std::ranges::for_each(m_chunks, &EventChunk::dropIndex);
    }
    for (auto chunk = m_chunks.rbegin(); chunk != m_chunks.rend(); ++chunk) {
        if (!mayHold(*chunk, search)) {
            continue;
        }
        if (const auto position = newestMatch(*chunk, search)) {
            return rowOf(chunk->idAt(*position));
        }
    }
    return std::nullopt;
}

EventList::Search EventList::searchFor(const EventFields &announced, StringTable::Id priority,
                                       StringTable::Id host, std::string_view dateFormat) {
    using Limits = std::numeric_limits<std::int64_t>;
    const EventDates::FormatId textFormat = formatId(dateFormat);
    const double seconds = floatingPointValue(announced.date.value_or(""));
    const std::int64_t whole = EventDates::wholeSeconds(seconds);
    const auto minute = m_dates.minuteOf(whole);
    return {.priority = priority,
            .host = host,
            .message = *announced.message,
            .seconds = seconds,
            .wholeSeconds = whole,
            .textFormat = textFormat,
            .minute = minute,
            .span = minute ? m_dates.momentsInMinuteOf(whole)
                           : DateFormat::Span{Limits::min(), Limits::max()},
            .fieldsKey = fieldsKey(priority, host, *announced.message)};
}

bool EventList::mayHold(const EventChunk &chunk, const Search &search) {
    return (chunk.earliest() <= search.span.last && chunk.latest() >= search.span.first) ||
           holdsOddMoments(chunk);
}

std::optional<std::size_t> EventList::newestMatch(EventChunk &chunk, Search &search) {
    std::optional<std::size_t> newest;
    const auto visit = [&](std::size_t position) {
        if ((!newest || position > *newest) && matches({&chunk, position}, search)) {
            newest = position;
        }
    };
    if (!chunk.hasIndex() && search.tablesToBuild > 0) {
        --search.tablesToBuild;
        buildIndex(chunk);
    }
    // A minute that is not known may be that of any event.
    if (!chunk.hasIndex() || (m_indexHasMinutes && !search.minute)) {
        for (std::size_t position = chunk.size(); position > 0 && !newest; --position) {
            visit(position - 1);
        }
        return newest;
    }
    if (search.minute) {
        chunk.lookUp(keyWithMinute(search.fieldsKey, *search.minute), visit);
    }
    if (!search.minute || holdsOddMoments(chunk)) {
        chunk.lookUp(search.fieldsKey, visit);
    }
    return newest;
}

bool EventList::matches(const Place &place, const Search &search) {
    const EventRecord &record = place.record();
    if (record.isLeaving != 0 || record.priority != search.priority || record.host != search.host ||
        place.chunk->message(record) != search.message) {
        return false;
    }
    settle(place);
    if (record.format == EventRecord::kRawDate) {
        return false;  // digits are no rendered date
    }
    const bool isText = record.format == EventRecord::kTextDate;
    const DateFormat &format = m_dates.format(isText ? search.textFormat : record.format);
    if (isText || static_cast<double>(search.wholeSeconds) != search.seconds) {
        return dateText(place) == format.render(search.seconds);
    }
    return format.rendersAlike(record.seconds, search.wholeSeconds);
}

}  // namespace quorbel
