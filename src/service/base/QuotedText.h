#pragma once

#include "common/LegibleText.h"

#include <string>
#include <string_view>

namespace quorbel {

/// A text that somebody else wrote, legible, in quotation marks: for the middle of a line.
std::string quoted(std::string_view text);

}  // namespace quorbel
