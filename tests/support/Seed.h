#pragma once

#include "platform/Number.h"

#include <cstdlib>
#include <random>
#include <string_view>

namespace quorbel::testing {

/// What a test's random cases begin with. Always the same, so that a change is not blamed for what
/// was there before it; QUORBEL_SEED gives another one, and "random" a new one each time.
inline unsigned seed() {
    constexpr unsigned kUsual = 20'260'101;
    const char *const given = std::getenv("QUORBEL_SEED");
    const std::string_view text = given == nullptr ? "" : given;
    return text == "random" ? std::random_device{}() : readNumber<unsigned>(text).value_or(kUsual);
}

}  // namespace quorbel::testing
