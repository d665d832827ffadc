#pragma once

#include <string>
#include <string_view>

namespace quorbel {

/// A text that somebody else wrote, for a line of the journal or a reply: in quotation marks, with
/// "?" for control characters and for bytes that are no UTF-8, and shortened when it is long.
std::string quoted(std::string_view text);

}  // namespace quorbel
