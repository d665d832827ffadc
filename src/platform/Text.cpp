#include "platform/Text.h"

#include "platform/Number.h"
#include "platform/Utf8.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace quorbel {

namespace {

std::string_view withoutLeadingSpace(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    return text;
}

/// What an emoji's flag is spelled with, behind the black flag.
bool isTag(char32_t code) {
    return code >= 0xE0020 && code <= 0xE007F;
}

// std::from_chars does not say whether a number was too large or too small.
double outOfRangeValue(const std::string &number) {
    static const locale_t kPlainLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(number.c_str(), nullptr, kPlainLocale);
}

}  // namespace

bool isAllDecimalDigits(std::string_view text) {
    while (!text.empty()) {
        if (isDigit(text.front())) {
            text.remove_prefix(1);
            continue;
        }
        const Utf8Character character = firstUtf8Character(text);
        if (character.code < 0x80 || u_isdigit(static_cast<UChar32>(character.code)) == 0) {
            return false;
        }
        text.remove_prefix(character.length);
    }
    return true;
}

double floatingPointValue(std::string_view text) {
    text = withoutLeadingSpace(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    // from_chars alone would take another sign, "inf" and "nan".
    if (text.empty() || !(isDigit(text.front()) || text.front() == '.')) {
        return 0.0;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        value = outOfRangeValue(std::string(text.data(), end));
    }
    return negative ? -value : value;
}

std::int64_t integerValue(std::string_view text) {
    text = withoutLeadingSpace(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return 0;
        }
    }
    std::int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<std::int64_t>;
        return text.starts_with('-') ? Limits::min() : Limits::max();
    }
    return value;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

bool isUnseen(char32_t code, char32_t before, char32_t after) {
    // The scripts and emoji beyond this one need them; in Latin, Greek or Cyrillic they only hide.
    constexpr char32_t kFirstJoinedScript = 0x0590;
    constexpr char32_t kKeycap = 0x20E3;
    const auto character = static_cast<UChar32>(code);
    if (code >= ' ' && code < 0x7F) {
        return false;
    }
    if (u_hasBinaryProperty(character, UCHAR_JOIN_CONTROL) != 0) {
        return before < kFirstJoinedScript || after < kFirstJoinedScript;
    }
    if (u_hasBinaryProperty(character, UCHAR_VARIATION_SELECTOR) != 0 || isTag(code)) {
        return before < kFirstJoinedScript && after != kKeycap;
    }
    constexpr std::uint32_t kUnseen =
        U_GC_CC_MASK | U_GC_CF_MASK | U_GC_CS_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;
    return ((U_GET_GC_MASK(character) & kUnseen) != 0 &&
            u_hasBinaryProperty(character, UCHAR_PREPENDED_CONCATENATION_MARK) == 0) ||
           u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0 ||
           U_IS_UNICODE_NONCHAR(character);
}

bool isUtf8(std::string_view bytes) {
    while (true) {
        bytes.remove_prefix(asciiPrefixLength(bytes));
        if (bytes.empty()) {
            return true;
        }
        const std::size_t length = firstUtf8Character(bytes).length;
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
}

}  // namespace quorbel
