#include "core/EventMatcher.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace quorbel {

namespace {

/// Whether rendered dates consist of nothing but digits, the format's own characters and "AM" or
/// "PM": so it is unless it names days, zones, eras or whatever else has names.
bool isPlainDateFormat(std::string_view setting) {
    return std::ranges::all_of(setting, [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return code < 0x80U &&
               (std::isalpha(code) == 0 ||
                std::string_view("yMdHhmsSAPa").find(character) != std::string_view::npos);
    });
}

/// Whether a text may be part of a date that is rendered in a format.
bool mayBeInDates(const TextPattern &pattern, std::string_view setting) {
    if (!isPlainDateFormat(setting)) {
        return true;
    }
    return pattern.mayBeInTextOf(
        std::string(setting.empty() ? DateFormat::kDefaultPattern : setting) + "0123456789-AMP");
}

}  // namespace

EventMatcher::EventMatcher(EventList &list, EventQuery filter)
    : m_events(list), m_filter(std::move(filter)), m_host(m_filter.host) {
    for (const TextCondition &condition : m_filter.texts) {
        Text text{TextPattern(condition.pattern), condition.pattern, condition.isNegated};
        if (m_error.empty()) {
            m_error = text.pattern.error();
        }
        for (std::size_t rating = 0; m_error.empty() && rating < kRatingCount; ++rating) {
            text.isInRating[rating] =
                text.pattern.isIn(severityLevelName(static_cast<std::int64_t>(rating) - 1));
        }
        m_texts.push_back(std::move(text));
    }
}

void EventMatcher::forgetTexts() {
    m_priorities.clear();
    m_hosts.clear();
    for (Text &text : m_texts) {
        text.priorities.clear();
        text.hosts.clear();
        text.mayBeInDates.clear();
        text.lastDate = {};
    }
}

std::size_t EventMatcher::endOfRun(const EventChunk &chunk, std::size_t first, std::size_t most) {
    constexpr std::size_t kMostBytes = std::size_t{1} << 20U;
    const auto placeOf = [&](std::size_t position) -> std::size_t {
        const std::uint32_t message = chunk.record(position).message;
        return message == EventRecord::kNoMessage ? 0 : message;
    };
    std::size_t last = std::min(first + most, chunk.size());
    while (last > first + 1 && placeOf(last - 1) > placeOf(first) + kMostBytes) {
        last = first + (last - first) / 2;
    }
    return last;
}

void EventMatcher::match(EventChunk &chunk, std::size_t first, std::size_t last,
                         std::vector<EventMatch> &matches) {
    m_isMeant.assign(last - first, true);
    Run run{chunk, first, m_isMeant};
    applyFields(run);
    for (Text &text : m_texts) {
        applyText(run, text);
    }
    std::size_t number = 0;
    chunk.visitIds(first, run.size(), [&](EventId id) {
        if (run.isMeant[number]) {
            matches.emplace_back(id, m_events.settled(chunk, first + number).image);
        }
        ++number;
    });
}

void EventMatcher::applyFields(Run &run) {
    const bool hasFields = m_filter.leastSeverity || !m_filter.facility.empty() ||
                           !m_filter.host.empty() || m_filter.from || m_filter.until;
    for (std::size_t number = 0; hasFields && number < run.size(); ++number) {
        run.isMeant[number] = meetsFields(m_events.settled(run.chunk, run.first + number));
    }
}

bool EventMatcher::meetsFields(const EventRecord &record) {
    if ((m_filter.from && record.seconds < *m_filter.from) ||
        (m_filter.until && record.seconds >= *m_filter.until)) {
        return false;
    }
    if ((m_filter.leastSeverity || !m_filter.facility.empty()) &&
        !m_priorities.test(record.priority, [&] { return meetsPriority(record.priority); })) {
        return false;
    }
    return m_filter.host.empty() ||
           m_hosts.test(record.host, [&] { return m_host.matches(m_events.host(record.host)); });
}

bool EventMatcher::meetsPriority(StringTable::Id id) const {
    if (m_filter.leastSeverity && m_events.classes(id).shown > *m_filter.leastSeverity) {
        return false;
    }
    const std::string_view priority = m_events.priority(id);
    return m_filter.facility.empty() || priority.substr(0, priority.find('.')) == m_filter.facility;
}

void EventMatcher::applyText(Run &run, Text &text) {
    constexpr std::size_t kFewOfThem = 8;
    const auto meant = static_cast<std::size_t>(std::ranges::count(run.isMeant, true));
    m_isFound.assign(run.size(), false);
    // A single search through the bytes of all messages takes a fraction of one for each.
    const bool together = !text.spec.isExpression && meant > run.size() / kFewOfThem;
    if (together) {
        findInMessages(run, text);
    }
    for (std::size_t number = 0; number < run.size(); ++number) {
        if (run.isMeant[number]) {
            const bool isFound = m_isFound[number] || isInOthers(run, number, text) ||
                                 (!together && isInMessage(run, number, text)) ||
                                 isInDate(run, number, text);
            run.isMeant[number] = isFound != text.isNegated;
        }
    }
}

bool EventMatcher::isInMessage(const Run &run, std::size_t number, const Text &text) const {
    const auto message = run.chunk.message(run.chunk.record(run.first + number));
    return text.pattern.isIn(message.value_or(std::string_view()));
}

/// Searches the messages' bytes as one text. What is found there counts when it lies within one
/// message; between them stands what is no part of any.
void EventMatcher::findInMessages(const Run &run, const Text &text) {
    const std::string_view bytes = run.chunk.bytes();
    const auto startOf = [&](std::string_view message) {
        return static_cast<std::size_t>(message.data() - bytes.data());
    };
    std::optional<TextPattern::Span> found;
    std::size_t end = 0;
    for (std::size_t left = run.size(); left > 0 && end == 0; --left) {
        if (const auto message = run.chunk.message(run.chunk.record(run.first + left - 1))) {
            end = startOf(*message) + message->size();
        }
    }
    const std::string_view searched = bytes.substr(0, end);
    for (std::size_t number = 0; number < run.size(); ++number) {
        const auto message = run.chunk.message(run.chunk.record(run.first + number));
        if (!message) {
            continue;
        }
        const std::size_t begin = startOf(*message);
        while (!found || found->begin < begin ||
               (found->begin < begin + message->size() && found->end > begin + message->size())) {
            const std::size_t from = found ? std::max(found->begin + 1, begin) : begin;
            found = text.pattern.find(searched, from);
            if (!found) {
                return;
            }
        }
        m_isFound[number] = found->end <= begin + message->size();
    }
}

bool EventMatcher::isInOthers(const Run &run, std::size_t number, Text &text) {
    const EventRecord &record = m_events.settled(run.chunk, run.first + number);
    return text.isInRating[record.image] || text.priorities.test(record.priority, [&] {
        return text.pattern.isIn(m_events.priority(record.priority));
    }) || text.hosts.test(record.host, [&] {
        return text.pattern.isIn(m_events.host(record.host));
    });
}

bool EventMatcher::isInDate(const Run &run, std::size_t number, Text &text) {
    const EventRecord &record = run.chunk.record(run.first + number);
    if (!mayBeInDate(record, text)) {
        return false;
    }
    // Events of the same second follow one another.
    LastDate &last = text.lastDate;
    const bool isRendered = record.format != EventRecord::kTextDate;
    if (!isRendered || last.format != record.format || last.seconds != record.seconds) {
        const auto date = m_events.date(run.chunk, run.first + number);
        last = {isRendered ? record.format : EventRecord::kTextDate, record.seconds,
                text.pattern.isIn(date.value_or(std::string()))};
    }
    return last.isIn;
}

bool EventMatcher::mayBeInDate(const EventRecord &record, Text &text) const {
    if (record.format == EventRecord::kTextDate || record.format == EventRecord::kRawDate) {
        return true;
    }
    text.mayBeInDates.resize(EventRecord::kTextDate + 1, Known::kNot);
    Known &known = text.mayBeInDates[record.format];
    if (known == Known::kNot) {
        const bool may = mayBeInDates(text.pattern, m_events.dateSetting(record.format));
        known = may ? Known::kYes : Known::kNo;
    }
    return known == Known::kYes;
}

}  // namespace quorbel
