#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>

namespace quorbel {

/// Lets something happen only so many times a minute, and counts what it holds back. A minute
/// begins with the first time that something is asked for after the last one has ended.
class StormGuard {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::minutes kWindow{1};

    explicit StormGuard(std::uint64_t most) : m_most(most) {}

    bool allows(Clock::time_point now) {
        if (now >= m_windowEnd) {
            m_windowEnd = now + kWindow;
            m_allowed = 0;
        }
        if (m_allowed < m_most) {
            ++m_allowed;
            return true;
        }
        ++m_heldBack;
        return false;
    }

    /// When to tell what was held back; nothing when nothing was.
    [[nodiscard]] std::optional<Clock::time_point> reportTime() const {
        return m_heldBack > 0 ? std::optional(m_windowEnd) : std::nullopt;
    }
    /// How much was held back since the last call.
    std::uint64_t takeHeldBack() { return std::exchange(m_heldBack, 0); }

private:
    std::uint64_t m_most;
    std::uint64_t m_allowed = 0;
    std::uint64_t m_heldBack = 0;
    Clock::time_point m_windowEnd;
};

}  // namespace quorbel
