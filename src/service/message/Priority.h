#pragma once

#include "common/Facility.h"
#include "common/Severity.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace quorbel {

/// Facility and severity of a message, by the numbers of RFC 5424, 6.2.1.
struct Priority {
    std::uint8_t facility = 0;
    std::uint8_t severity = 0;

    /// Nothing when the value is above 191.
    static std::optional<Priority> fromValue(unsigned value) {
        if (value >= kFacilityCount * kSeverityCount) {
            return std::nullopt;
        }
        return Priority{static_cast<std::uint8_t>(value / kSeverityCount),
                        static_cast<std::uint8_t>(value % kSeverityCount)};
    }

    /// "Local7.Debug". The text lives as long as the program.
    [[nodiscard]] std::string_view text() const;
    /// Critical, Alert and Emergency.
    [[nodiscard]] bool isUrgent() const { return severity <= 2; }

    bool operator==(const Priority &) const = default;
};

/// What a message without a usable priority gets: user, notice (RFC 3164, 4.3.3).
inline constexpr Priority kAssumedPriority{1, 5};

}  // namespace quorbel
