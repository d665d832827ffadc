#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// Whether every character of a UTF-8 text is a decimal digit of some script (Unicode category Nd).
/// True for the empty text.
bool isAllDecimalDigits(std::string_view text);

/// The number at the start of a text, read without regard to the locale: leading white space, a
/// sign, digits, a fraction, an exponent. 0 when there is none. No hexadecimal, no names of
/// numbers.
double floatingPointValue(std::string_view text);

/// The whole number at the start of a text: leading white space, a sign, digits. 0 when there is
/// none; beyond 64 bits the nearest limit.
std::int64_t integerValue(std::string_view text);

/// A text without the blanks (space, tab, carriage return, line feed) around it.
std::string_view trimmed(std::string_view text);

/// Whether a character is not seen where a text is painted, or makes the text around it look other
/// than it is: controls, what turns the direction of reading, what has no width, separators of
/// lines and what is no character. `before` and `after` are its neighbours, 0 at an end: what joins
/// or varies the characters of a script, or of an emoji, does so visibly and is none of these.
bool isUnseen(char32_t code, char32_t before, char32_t after);

/// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates, nothing above
/// U+10FFFF).
bool isUtf8(std::string_view bytes);

}  // namespace quorbel
