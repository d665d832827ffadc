#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorbel {

inline constexpr std::size_t kSeverityClassCount = 9;
inline constexpr std::size_t kUnknownClass = 8;
/// Those that a message can have (RFC 5424, 6.2.1); their classes have the same numbers.
inline constexpr unsigned kSeverityCount = 8;

/// The user's rating of a severity class; also the order of the three images.
enum SeverityLevel : std::int64_t { kNormal = 0, kModerate = 1, kSevere = 2 };

/// "Normal", "Moderate", "Severe": the images' names, by level. Empty for any other level.
std::string_view severityLevelName(std::int64_t level);

/// One of the nine severity classes with everything that differs between them. What the window
/// holds of each is in core/AppState.h, in the same order.
struct SeverityClass {
    std::string_view name;          ///< searched in "Priority"; empty for Unknown
    std::string_view deletionWord;  ///< searched in "Priority" when an event is deleted
    std::string_view keyPart;       ///< in settings keys and control names: "Alerting"
    std::string_view label;         ///< as pages show it; contains the alert queue's key word
    std::int64_t defaultLevel;      ///< where no settings document exists
};

extern const std::array<SeverityClass, kSeverityClassCount> kSeverityClasses;

/// The three ways in which a Priority is classified. They differ on purpose.
struct PriorityClasses {
    /// Every class whose name the Priority contains; Unknown alone when there is none.
    std::bitset<kSeverityClassCount> counted;
    /// The first class whose name it contains: the one that picks image, header and colour.
    std::uint8_t shown = kUnknownClass;
    /// The first class whose deletion word it contains: the counter that a deletion lowers.
    std::uint8_t deleted = kUnknownClass;
};

PriorityClasses classifyPriority(std::string_view priority);

}  // namespace quorbel
