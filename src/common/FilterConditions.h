#pragma once

#include "common/SenderRange.h"
#include "common/WildcardPattern.h"
#include "platform/Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorbel {

/// What a filter record of the settings asks of a message. All of it must hold:
///
/// - "IP" with "Mask": a SenderRange.
/// - "Facility", "Severity": "Any" or an empty text stands for all. A name that does not exist
///   holds for none.
/// - "Message": a wildcard pattern for the whole text. An empty one stands for any.
///
/// What a record lacks, or holds in another form, counts as empty.
class FilterConditions {
public:
    explicit FilterConditions(const Dictionary &record);

    [[nodiscard]] const SenderRange &senders() const { return m_senders; }
    /// Whether the record names a facility, or a severity, that exists; without, nothing is meant.
    [[nodiscard]] bool hasFacility() const { return m_facilities != 0; }
    [[nodiscard]] bool hasSeverity() const { return m_severities != 0; }
    /// Facility and severity by the numbers of RFC 5424, 6.2.1.
    [[nodiscard]] bool meansPriority(unsigned facility, unsigned severity) const {
        return (m_facilities >> facility & 1U) != 0 && (m_severities >> severity & 1U) != 0;
    }
    [[nodiscard]] bool meansAnyMessage() const { return !m_message; }
    /// `folded` is a text that went through foldCase().
    [[nodiscard]] bool meansMessage(std::string_view folded) const {
        return !m_message || m_message->matches(folded);
    }
    /// Whether there is no message that is not meant.
    [[nodiscard]] bool meansEverything() const;

private:
    SenderRange m_senders;
    std::uint32_t m_facilities = 0;  ///< one bit for each that is meant
    std::uint32_t m_severities = 0;
    std::optional<WildcardPattern> m_message;  ///< nothing: any message
};

}  // namespace quorbel
