#include "service/message/EventFilter.h"

#include "common/SettingsDocument.h"

#include <algorithm>

namespace quorbel {

namespace {

std::vector<EventFilter> readFilters(const Dictionary &settings, std::string_view key) {
    std::vector<EventFilter> filters;
    for (const Value &record : settingArray(settings, key)) {
        if (record.dictionary() != nullptr) {
            filters.emplace_back(*record.dictionary());
        }
    }
    return filters;
}

}  // namespace

void FilterSubject::set(const IpAddress &address, Priority priority, std::string_view lines,
                        std::size_t prefix, std::string_view relayedHost) {
    m_address = &address;
    m_relayedHost = relayedHost;
    m_priority = priority;
    m_lines = lines;
    m_prefix = prefix;
    m_message.clear();
    m_folded.clear();
}

const std::string &FilterSubject::message() const {
    // Written messages are never empty.
    for (std::string_view rest = m_message.empty() ? m_lines : ""; !rest.empty();) {
        const std::size_t end = rest.find('\r');
        m_message += rest.substr(m_prefix, end - m_prefix);
        rest.remove_prefix(end + 2);
    }
    return m_message;
}

const std::string &FilterSubject::foldedMessage() const {
    if (m_folded.empty()) {
        foldCase(message(), m_folded);
    }
    return m_folded;
}

EventFilter::EventFilter(const Dictionary &record)
    : m_name(settingText(record, "Name").value_or("")), m_conditions(record) {}

bool EventFilter::matches(const FilterSubject &subject) const {
    const Priority priority = subject.priority();
    return m_conditions.meansPriority(priority.facility, priority.severity) &&
           m_conditions.senders().contains(subject.address()) &&
           (m_conditions.meansAnyMessage() || m_conditions.meansMessage(subject.foldedMessage()));
}

FilterSet::FilterSet(const Dictionary &settings)
    : m_includes(readFilters(settings, "includeFiltersArray")),
      m_excludes(readFilters(settings, "excludeFiltersArray")) {}

std::optional<std::string_view> FilterSet::refusalOf(const FilterSubject &subject) const {
    const auto matches = [&subject](const EventFilter &filter) { return filter.matches(subject); };
    if (!m_includes.empty() && std::ranges::none_of(m_includes, matches)) {
        return std::string_view();
    }
    const auto excluding = std::ranges::find_if(m_excludes, matches);
    return excluding == m_excludes.end() ? std::nullopt
                                         : std::optional<std::string_view>(excluding->name());
}

}  // namespace quorbel
