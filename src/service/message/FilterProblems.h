#pragma once

#include "platform/Value.h"

#include <string>
#include <vector>

namespace quorbel {

/// What in the filters of the settings, and in those of their actions, hardly is what somebody
/// meant, as a line each: a filter that can match nothing, a mask longer than its address, and an
/// address that does not count because its mask is 0. Besides, thresholds of actions that mean
/// nothing. At most kMostFilterProblems of them, and one line that says how many there are besides.
std::vector<std::string> filterProblems(const Dictionary &settings);

inline constexpr std::size_t kMostFilterProblems = 10;

}  // namespace quorbel
