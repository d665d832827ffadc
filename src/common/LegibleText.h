#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorbel {

/// A text that somebody else wrote, for a line of the journal or a reply: with "?" for control
/// characters, for bytes that are no UTF-8, and for the code points that the bus does not take.
/// When it is longer than `mostBytes`, as many whole characters as these hold, and "..." behind
/// them.
std::string legible(std::string_view text, std::size_t mostBytes);

/// So much at most of the name of an action or export, and of a problem, does the service tell.
inline constexpr std::size_t kMostToldBytes = 500;

}  // namespace quorbel
