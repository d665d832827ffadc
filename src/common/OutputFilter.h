#pragma once

#include "common/AddressNetwork.h"
#include "common/Facility.h"
#include "common/LogReader.h"
#include "common/Severity.h"
#include "common/WildcardPattern.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Which of the stored events an output hands on: those that meet all four conditions. One that is
/// not set is met by all.
///
/// A value: once it is set, matches() may be called on several threads at once.
class OutputFilter {
public:
    // Each takes the text of one condition, and returns what is wrong with it, or nothing; then the
    // condition stays as it was. An empty text is met by all.

    /// A list of names, addresses and networks ("10.0.0.0/8"), separated by commas. In names and
    /// addresses, "*" stands for any characters and "?" for one; capital and small letters are the
    /// same. What follows a "!" is left out; a list of nothing else means all other hosts. It is
    /// the stored event's Host that is looked at, and a network means those that are shown as
    /// addresses.
    std::optional<std::string> setHosts(std::string_view text);
    /// A list of facilities, separated by commas, as they stand in a Priority: "Auth, Local7".
    std::optional<std::string> setFacility(std::string_view text);
    /// A severity, and all that are worse: "Warning".
    std::optional<std::string> setSeverity(std::string_view text);
    /// A WildcardPattern for the whole message of an event.
    std::optional<std::string> setMessage(std::string_view text);

    /// Whether every event is handed on.
    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool matches(const LogLine &line) const;

    /// Whether they were made of the same texts.
    bool operator==(const OutputFilter &other) const { return m_texts == other.m_texts; }

private:
    struct HostPart {
        std::optional<AddressNetwork> network;
        WildcardPattern name;  ///< counts without a network
        bool isExcluded;
    };

    static constexpr std::uint32_t kAllFacilities = (std::uint32_t{1} << kFacilityCount) - 1;
    static constexpr std::uint8_t kLeastSeverity = kSeverityCount - 1;

    [[nodiscard]] bool meansAnyPriority() const {
        return m_facilities == kAllFacilities && m_severity == kLeastSeverity;
    }
    [[nodiscard]] bool meansHost(std::string_view host) const;
    [[nodiscard]] bool meansPriority(std::string_view priority) const;

    std::array<std::string, 4> m_texts;
    std::vector<HostPart> m_hosts;
    bool m_namesHosts = false;                    ///< one of them is not excluded
    std::uint32_t m_facilities = kAllFacilities;  ///< one bit for each that is meant
    std::uint8_t m_severity = kLeastSeverity;     ///< this one, and those of a smaller number
    std::optional<WildcardPattern> m_message;     ///< nothing: any message
};

}  // namespace quorbel
