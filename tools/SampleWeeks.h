#pragma once

#include <string>

namespace quorbel {

/// The log of a house for three weeks up to now, oldest line first; of the hosts that send
/// regularly the first `silent` have stopped.
std::string sampleWeeks(int silent);
/// The same house on its first day.
std::string sampleFirstDay();

}  // namespace quorbel
