#include "core/FilterCount.h"

#include "common/Facility.h"
#include "common/IpAddress.h"
#include "common/Severity.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace quorbel {

namespace {

/// Whether conditions mean a priority as events hold it: "Local7.Debug". None that the service does
/// not write.
bool meansPriority(const FilterConditions &conditions, std::string_view text) {
    const std::size_t point = text.find('.');
    const auto facility = std::ranges::find(kFacilityNames, text.substr(0, point));
    if (point == std::string_view::npos || facility == kFacilityNames.end()) {
        return false;
    }
    const auto severities = std::span(kSeverityClasses).first(kSeverityCount);
    const auto severity =
        std::ranges::find(severities, text.substr(point + 1), &SeverityClass::name);
    return severity != severities.end() &&
           conditions.meansPriority(static_cast<unsigned>(facility - kFacilityNames.begin()),
                                    static_cast<unsigned>(severity - severities.begin()));
}

template <typename Answer>
Answer &slotFor(std::vector<Answer> &answers, StringTable::Id id) {
    if (answers.size() <= id) {
        answers.resize(id + id / 2 + 1);
    }
    return answers[id];
}

}  // namespace

void FilterCount::start(const Dictionary &record, std::int64_t today) {
    m_conditions = FilterConditions(record);
    m_today = today;
    restart();
}

void FilterCount::clear() {
    m_counts = {};
    m_priorities.clear();
    m_hosts.clear();
}

void FilterCount::look(EventChunk &chunk, std::size_t first, std::size_t last) {
    for (std::size_t position = first; position < last; ++position) {
        const EventRecord &record = chunk.record(position);
        const Answer answer = answerFor(chunk, record);
        if (answer == Answer::kYes) {
            ++m_counts.meant;
            const bool hasMoment = record.format != EventRecord::kTextDate;
            m_counts.meantToday += hasMoment && record.seconds >= m_today ? 1U : 0U;
        }
        m_counts.unknown += answer == Answer::kUnknown ? 1U : 0U;
    }
}

FilterCount::Answer FilterCount::answerFor(const EventChunk &chunk, const EventRecord &record) {
    if (ofPriority(record.priority) == Answer::kNo) {
        return Answer::kNo;
    }
    const Answer host = ofHost(record.host);
    return host == Answer::kNo || !isMessageMeant(chunk, record) ? Answer::kNo : host;
}

FilterCount::Answer FilterCount::ofPriority(StringTable::Id id) {
    Answer &answer = slotFor(m_priorities, id);
    if (answer == Answer::kNot) {
        answer = meansPriority(m_conditions, reader().priority(id)) ? Answer::kYes : Answer::kNo;
    }
    return answer;
}

FilterCount::Answer FilterCount::ofHost(StringTable::Id id) {
    const SenderRange &senders = m_conditions.senders();
    Answer &answer = slotFor(m_hosts, id);
    if (answer != Answer::kNot) {
        return answer;
    }
    if (senders.isAnybody()) {
        answer = Answer::kYes;
    } else if (senders.isNobody()) {
        answer = Answer::kNo;
    } else if (const auto address = IpAddress::parse(reader().host(id))) {
        answer = senders.contains(*address) ? Answer::kYes : Answer::kNo;
    } else {
        answer = Answer::kUnknown;
    }
    return answer;
}

bool FilterCount::isMessageMeant(const EventChunk &chunk, const EventRecord &record) {
    if (m_conditions.meansAnyMessage()) {
        return true;
    }
    foldCase(chunk.message(record).value_or(""), m_folded);
    return m_conditions.meansMessage(m_folded);
}

}  // namespace quorbel
