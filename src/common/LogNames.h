#pragma once

#include <algorithm>
#include <string_view>

namespace quorbel {

/// Whether the service names a log file so, after a day: "2026-11-21.log". Others it leaves alone.
inline bool isDailyLogName(std::string_view name) {
    constexpr std::string_view kShape = "0000-00-00.log";
    return std::ranges::equal(name, kShape, [](char c, char shape) {
        return shape == '0' ? c >= '0' && c <= '9' : c == shape;
    });
}

}  // namespace quorbel
