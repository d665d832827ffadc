#pragma once

#include <chrono>
#include <concepts>
#include <thread>

namespace quorbel::testing {

inline constexpr std::chrono::milliseconds kPatience{20000};

/// Asks until the condition holds; false when it did not within `limit`.
bool waitUntil(std::predicate auto condition, std::chrono::milliseconds limit = kPatience) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace quorbel::testing
