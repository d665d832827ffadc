#include "core/EventMatcher.h"

#include <algorithm>
#include <cctype>
#include <numeric>
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

/// Leaves the positions for which `isMeant(position)`.
template <typename IsMeant>
void keep(EventMatcher::Positions &positions, IsMeant isMeant) {
    // Positions are copied in any case: no branch, no guess that may be wrong.
    std::size_t kept = 0;
    for (const std::uint32_t position : positions) {
        positions[kept] = position;
        kept += static_cast<std::size_t>(isMeant(position));
    }
    positions.resize(kept);
}

void placesOf(const EventChunk &chunk, const EventMatcher::Positions &positions,
              MessageRun::Places &places) {
    places.resize(positions.size());
    std::ranges::transform(positions, places.begin(), [&chunk](std::uint32_t position) {
        return chunk.record(position).message;
    });
}

std::string_view messageAt(const EventChunk &chunk, std::uint32_t position) {
    return chunk.message(chunk.record(position)).value_or(std::string_view());
}

}  // namespace

bool mayBeInDates(const TextPattern &pattern, std::string_view setting) {
    if (!isPlainDateFormat(setting)) {
        return true;
    }
    return pattern.mayBeInTextOf(
        std::string(setting.empty() ? DateFormat::kDefaultPattern : setting) + "0123456789-AMP");
}

EventMatcher::EventMatcher(EventList &list, EventQuery filter)
    : m_events(list), m_filter(std::move(filter)), m_host(m_filter.host) {
    for (const TextCondition &condition : m_filter.texts) {
        Text text{TextPattern(condition.pattern), condition.isNegated};
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
        text.mayBeInDates.fill(Known::kNot);
        text.lastDate = {};
    }
}

bool EventMatcher::mayBeIn(const EventChunk &chunk) const {
    return !choosesTime() || !m_events.isSettled(chunk) ||
           ((!m_filter.from || chunk.latest() >= *m_filter.from) &&
            (!m_filter.until || chunk.earliest() < *m_filter.until));
}

bool EventMatcher::readsMessages(const EventChunk &chunk) const {
    return std::ranges::any_of(
        m_texts, [&chunk](const Text &text) { return text.pattern.mayBeIn(chunk.filter()); });
}

void EventMatcher::foresee(EventChunk &chunk) {
    SearchAhead &ahead = m_events.searchAhead();
    if (!ahead.isOfUse() || !chunk.isPacked() || !readsMessages(chunk) ||
        (choosesFields() && !m_events.isSettled(chunk))) {
        return;
    }
    TextSearch::Request request{chunk.packed(), placesMeant(chunk), {}};
    if (request.places && request.places->empty()) {
        return;
    }
    for (const Text &text : m_texts) {
        request.isElsewhere.push_back(text.wasElsewhere);
    }
    if (!m_ahead) {
        m_ahead = std::make_unique<TextsAhead>(ahead, m_filter.texts);
    }
    m_ahead->begin(std::move(request));
}

/// Where those messages begin whose events meet all conditions but those on texts; nothing for all.
std::optional<MessageRun::Places> EventMatcher::placesMeant(const EventChunk &chunk) {
    if (!choosesFields()) {
        return std::nullopt;
    }
    makeRoom();
    Positions positions(chunk.size());
    std::iota(positions.begin(), positions.end(), 0U);
    applyFields(chunk, positions);
    MessageRun::Places places;
    placesOf(chunk, positions, places);
    std::erase(places, MessageRun::kNowhere);
    return places;
}

void EventMatcher::makeRoom() {
    const std::size_t priorities = m_events.priorityLimit();
    const std::size_t hosts = m_events.hostLimit();
    m_priorities.makeRoom(priorities);
    m_hosts.makeRoom(hosts);
    for (Text &text : m_texts) {
        text.priorities.makeRoom(priorities);
        text.hosts.makeRoom(hosts);
    }
}

void EventMatcher::matchAll(EventChunk &chunk, std::size_t first, std::size_t last,
                            Positions &positions, std::vector<EventMatch> &matches) {
    positions.resize(last - first);
    std::iota(positions.begin(), positions.end(), static_cast<std::uint32_t>(first));
    match(chunk, positions, matches);
}

void EventMatcher::match(EventChunk &chunk, Positions &positions,
                         std::vector<EventMatch> &matches) {
    if (positions.empty()) {
        return;
    }
    makeRoom();
    m_events.settle(chunk, positions.front(), positions.back() + 1);
    applyFields(chunk, positions);
    for (Text &text : m_texts) {
        applyText(chunk, positions, text);
    }
    chunk.visitIds(positions, [&](std::uint32_t position, EventId id) {
        matches.push_back({id, chunk.record(position).image});
    });
}

bool EventMatcher::matches(EventChunk &chunk, std::uint32_t position) {
    makeRoom();
    const EventRecord &record = m_events.settled(chunk, position);
    return isInTime(record) && (!choosesPriority() || meetsPriority(record)) &&
           (m_filter.host.empty() || meetsHost(record)) &&
           std::ranges::all_of(m_texts, [&](Text &text) {
               const bool isFound = text.pattern.isIn(messageAt(chunk, position)) ||
                                    isInOthers(chunk, position, text);
               return isFound != text.isNegated;
           });
}

void EventMatcher::applyFields(const EventChunk &chunk, Positions &positions) {
    if (choosesTime()) {
        keep(positions, [&](std::uint32_t position) { return isInTime(chunk.record(position)); });
    }
    if (choosesPriority()) {
        keep(positions,
             [&](std::uint32_t position) { return meetsPriority(chunk.record(position)); });
    }
    if (!m_filter.host.empty()) {
        keep(positions, [&](std::uint32_t position) { return meetsHost(chunk.record(position)); });
    }
}

bool EventMatcher::isInTime(const EventRecord &record) const {
    return (!m_filter.from || record.seconds >= *m_filter.from) &&
           (!m_filter.until || record.seconds < *m_filter.until);
}

bool EventMatcher::meetsPriority(const EventRecord &record) {
    return m_priorities.test(record.priority, [&] { return isPriorityMeant(record.priority); });
}

bool EventMatcher::isPriorityMeant(StringTable::Id id) const {
    const PriorityClasses &classes = m_events.classes(id);
    if (m_filter.leastSeverity && classes.shown > *m_filter.leastSeverity) {
        return false;
    }
    if (m_filter.classes.any() && (classes.counted & m_filter.classes).none()) {
        return false;
    }
    const std::string_view priority = m_events.priority(id);
    return m_filter.facility.empty() || priority.substr(0, priority.find('.')) == m_filter.facility;
}

bool EventMatcher::meetsHost(const EventRecord &record) {
    return m_hosts.test(record.host, [&] { return m_host.matches(m_events.host(record.host)); });
}

void EventMatcher::applyText(EventChunk &chunk, Positions &positions, Text &text) {
    if (positions.empty()) {
        return;
    }
    findInMessages(chunk, positions, text);
    keep(positions, [&, next = m_answers.begin()](std::uint32_t position) mutable {
        const Answer answer = *next++;
        const bool isFound =
            answer == Answer::kYes ||
            (answer == Answer::kUnsure && text.pattern.matches(messageAt(chunk, position))) ||
            isElsewhere(chunk, position, text);
        return isFound != text.isNegated;
    });
}

void EventMatcher::findInMessages(const EventChunk &chunk, const Positions &positions,
                                  const Text &text) {
    m_answers.assign(positions.size(), Answer::kNo);
    if (!text.pattern.mayBeIn(chunk.filter())) {
        return;
    }
    placesOf(chunk, positions, m_places);
    if (const auto *found = m_ahead ? m_ahead->found(chunk.packed()) : nullptr) {
        takeAnswers(*found, text);
    } else {
        MessageRun(chunk.bytes(), m_places).glance(text.pattern, m_answers);
    }
}

/// Takes over what another thread found; what it did not look at remains to be looked at.
void EventMatcher::takeAnswers(const TextSearch::Found &found, const Text &text) {
    const auto &answers = found.answers[static_cast<std::size_t>(&text - m_texts.data())];
    auto place = found.places.begin();
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        place = std::find_if(place, found.places.end(),
                             [wanted = m_places[i]](auto next) { return next >= wanted; });
        const bool isKnown = place != found.places.end() && *place == m_places[i];
        m_answers[i] = isKnown ? answers[static_cast<std::size_t>(place - found.places.begin())]
                               : Answer::kUnsure;
    }
}

bool EventMatcher::isElsewhere(EventChunk &chunk, std::uint32_t position, Text &text) {
    const bool is = isInOthers(chunk, position, text);
    text.wasElsewhere = text.wasElsewhere || is;
    return is;
}

bool EventMatcher::isInOthers(EventChunk &chunk, std::uint32_t position, Text &text) {
    const EventRecord &record = chunk.record(position);
    return text.isInRating[record.image] || text.priorities.test(record.priority, [&] {
        return text.pattern.isIn(m_events.priority(record.priority));
    }) || text.hosts.test(record.host, [&] {
        return text.pattern.isIn(m_events.host(record.host));
    }) || (mayBeInDate(record, text) && isInDate(chunk, position, text));
}

bool EventMatcher::isInDate(EventChunk &chunk, std::uint32_t position, Text &text) {
    const EventRecord &record = chunk.record(position);
    // Events of the same second follow one another.
    LastDate &last = text.lastDate;
    const bool isRendered = record.format != EventRecord::kTextDate;
    if (!isRendered || last.format != record.format || last.seconds != record.seconds) {
        const auto date = m_events.date(chunk, position);
        last = {isRendered ? record.format : EventRecord::kTextDate, record.seconds,
                text.pattern.isIn(date.value_or(std::string()))};
    }
    return last.isIn;
}

bool EventMatcher::mayBeInDate(const EventRecord &record, Text &text) const {
    Known &known = text.mayBeInDates[record.format];
    if (known == Known::kNot) {
        const bool isRendered =
            record.format != EventRecord::kTextDate && record.format != EventRecord::kRawDate;
        const bool may =
            !isRendered || mayBeInDates(text.pattern, m_events.dateSetting(record.format));
        known = may ? Known::kYes : Known::kNo;
    }
    return known == Known::kYes;
}

}  // namespace quorbel
