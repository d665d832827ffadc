#pragma once

#include <string>
#include <string_view>

namespace quorbel {

/// Appends what somebody else wrote so that a terminal shows it and obeys none of it: characters
/// that are not seen, and bytes that are no UTF-8, stand as "#" and three octal digits for each of
/// their bytes, as control characters stand in the log files.
void appendVisible(std::string &out, std::string_view text);
std::string visible(std::string_view text);

/// Appends it as a string of JSON (RFC 8259), with its quotation marks: valid UTF-8, whatever the
/// text. Bytes that are none are U+FFFD, and characters that are not seen are escaped.
void appendJson(std::string &out, std::string_view text);

}  // namespace quorbel
