#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// The user's preferences domain "Quorbel": lines `key=value` in Quorbel.ini in the user's
/// configuration folder ($XDG_CONFIG_HOME, else ~/.config). Read only; read afresh at each call.
/// Lines that begin with '#', ';' or '[' say nothing; of equal keys the first one counts. Nothing
/// when the key is absent.
std::optional<std::string> preference(std::string_view key);

/// The same as an integer; a missing key or a text that is no number gives 0.
std::int64_t integerPreference(std::string_view key);

}  // namespace quorbel
