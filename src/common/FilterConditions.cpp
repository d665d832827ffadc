#include "common/FilterConditions.h"

#include "common/Facility.h"
#include "common/SettingsDocument.h"
#include "common/Severity.h"

#include <string>

namespace quorbel {

namespace {

constexpr std::string_view kAny = "Any";

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

constexpr std::uint32_t allBits(unsigned count) {
    return (1U << count) - 1;
}

}  // namespace

FilterConditions::FilterConditions(const Dictionary &record) : m_senders(record) {
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

bool FilterConditions::meansEverything() const {
    return m_senders.isAnybody() && meansAnyMessage() && m_facilities == allBits(kFacilityCount) &&
           m_severities == allBits(kSeverityCount);
}

}  // namespace quorbel
