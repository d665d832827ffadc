#pragma once

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

/// Whether any class that the priority counts under is among the labels: every severity whose name
/// it contains, Unknown when it contains none.
bool isSelected(std::string_view priority, const std::vector<std::string> &labels);

bool isSoundWanted(std::string_view priority, const AlertSettings &settings);
bool isPopupWanted(std::string_view priority, const AlertSettings &settings);

}  // namespace quorbel
