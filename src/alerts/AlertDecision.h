#pragma once

#include "common/Severity.h"
#include "core/AppState.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

inline constexpr std::int64_t kNotFound = std::numeric_limits<std::int64_t>::max();

/// The index of the first element that contains `key`, or kNotFound. An element that `key` contains
/// is no match.
std::int64_t findArray(const std::vector<std::string> &array, std::string_view key);

/// The classes that a priority counts under: every severity whose name it contains, Unknown when it
/// contains none.
using CountedClasses = decltype(PriorityClasses::counted);

/// Whether any of the classes is among the labels.
bool isSelected(const CountedClasses &classes, const std::vector<std::string> &labels);

bool isSoundWanted(const CountedClasses &classes, const AlertSettings &settings);
bool isPopupWanted(const CountedClasses &classes, const AlertSettings &settings);

}  // namespace quorbel
