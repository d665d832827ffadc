#pragma once

#include <cstddef>
#include <string_view>

namespace quorbel {

// Recognise a time stamp at the start of a text and return its length, or 0. Nothing is said about
// what follows it.

/// "Oct  1 22:14:15" (RFC 3164), also with a year or a fraction, a mark ("*", ".") in front of it
/// (a clock that is not set) or a colon behind it.
std::size_t legacyTimestampLength(std::string_view text);

/// "2003-10-11T22:14:15.003Z" (RFC 3339), also without a zone.
std::size_t isoTimestampLength(std::string_view text);

}  // namespace quorbel
