#include "service/message/EventFilter.h"

#include "core/LogReader.h"
#include "core/SettingsDocument.h"
#include "core/Severity.h"
#include "platform/Text.h"

#include <algorithm>

namespace quorbel {

namespace {

constexpr std::string_view kAny = "Any";

/// The editor stores the field's text; a number is taken as well.
std::int64_t readMask(const Dictionary &record) {
    const auto text = settingText(record, "Mask");
    return text ? integerValue(*text) : settingInteger(record, "Mask");
}

/// One bit for each of `count` names that is the wanted one, by `isName(index, text)`.
template <typename IsName>
std::uint32_t bitsFor(const Dictionary &record, std::string_view key, unsigned count,
                      const IsName &isName) {
    const std::string text = settingText(record, key).value_or("");
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (text.empty() || text == kAny || isName(i, text)) {
            bits |= 1U << i;
        }
    }
    return bits;
}

bool has(std::uint32_t bits, unsigned index) {
    return (bits >> index & 1U) != 0;
}

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

void FilterSubject::set(const IpAddress &address, Priority priority, std::string_view lines) {
    m_address = &address;
    m_priority = priority;
    m_lines = lines;
    m_message.clear();
    m_folded.clear();
}

const std::string &FilterSubject::message() const {
    // Written messages are never empty.
    if (m_message.empty()) {
        LogReader::readBytes(m_lines, [this](const LogLine &line) {
            m_message += line.message;
            return true;
        });
    }
    return m_message;
}

const std::string &FilterSubject::foldedMessage() const {
    if (m_folded.empty()) {
        foldCase(message(), m_folded);
    }
    return m_folded;
}

EventFilter::EventFilter(const Dictionary &record) {
    const std::int64_t mask = readMask(record);
    m_anySender = mask <= 0;
    m_network = readNetwork(record, mask);
    m_facilities = bitsFor(record, "Facility", kFacilityCount,
                           [](unsigned i, auto &text) { return kFacilityNames[i] == text; });
    m_severities = bitsFor(record, "Severity", kSeverityCount, [](unsigned i, auto &text) {
        return kSeverityClasses[i].name == text || kSeverityClasses[i].label == text;
    });
    const std::string pattern = settingText(record, "Message").value_or("");
    if (!pattern.empty()) {
        m_message.emplace(pattern);
        if (m_message->matchesEverything()) {
            m_message.reset();
        }
    }
}

std::optional<EventFilter::Network> EventFilter::readNetwork(const Dictionary &record,
                                                             std::int64_t mask) {
    const std::string text = settingText(record, "IP").value_or("");
    const auto address = IpAddress::parse(trimmed(text));
    if (!address) {
        return std::nullopt;
    }
    const bool isV4Text = text.find(':') == std::string::npos;
    const unsigned before = isV4Text ? IpAddress::kV4Begin : 0;
    const auto longest = std::int64_t{IpAddress::kBits - before};
    return Network{*address,
                   before + static_cast<unsigned>(std::clamp<std::int64_t>(mask, 0, longest))};
}

bool EventFilter::matches(const FilterSubject &subject) const {
    if (!has(m_facilities, subject.priority().facility) ||
        !has(m_severities, subject.priority().severity)) {
        return false;
    }
    if (!m_anySender) {
        const IpAddress &sender = subject.address();
        if (!m_network || m_network->address.isV4() != sender.isV4() ||
            !m_network->address.sharesPrefix(sender, m_network->bits)) {
            return false;
        }
    }
    return !m_message || m_message->matches(subject.foldedMessage());
}

FilterSet::FilterSet(const Dictionary &settings)
    : m_includes(readFilters(settings, "includeFiltersArray")),
      m_excludes(readFilters(settings, "excludeFiltersArray")) {}

bool FilterSet::passes(const FilterSubject &subject) const {
    const auto matches = [&subject](const EventFilter &filter) { return filter.matches(subject); };
    return (m_includes.empty() || std::ranges::any_of(m_includes, matches)) &&
           std::ranges::none_of(m_excludes, matches);
}

}  // namespace quorbel
