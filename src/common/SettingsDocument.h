#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

inline constexpr std::string_view kSettingsFileName = "Quorbel.ini";

/// Decodes the settings document. Nothing when the bytes are absent, damaged, or no dictionary:
/// all of these count as no document.
std::optional<Dictionary> decodeSettings(const std::optional<std::string> &bytes);

// A key's value as its readers take it. A missing key, and a value of another kind, read as the
// empty value: 0, false, no text, no elements.

/// A number of any kind, without its fraction; beyond 64 bits the nearest limit.
std::int64_t settingInteger(const Dictionary &settings, std::string_view key);
bool settingFlag(const Dictionary &settings, std::string_view key);
std::optional<std::string> settingText(const Dictionary &settings, std::string_view key);
/// The strings of an array; elements of another kind are left out.
std::vector<std::string> settingTexts(const Dictionary &settings, std::string_view key);
/// An array as it stands; empty when the key holds none.
Array settingArray(const Dictionary &settings, std::string_view key);
/// A dictionary as it stands; empty when the key holds none.
Dictionary settingDictionary(const Dictionary &settings, std::string_view key);

}  // namespace quorbel
