#include "core/LongestGaps.h"

#include <algorithm>
#include <functional>

namespace quorbel {

namespace {

constexpr std::ptrdiff_t kEnoughWeeks = 3;

}  // namespace

void LongestGaps::begin(LocalClock::Hour week) {
    // A clock that was put back goes on in the week it was in.
    const LocalClock::Hour later = m_week == 0 ? 0 : week - m_week;
    for (LocalClock::Hour i = 0; i < std::min<LocalClock::Hour>(later, kWeeks); ++i) {
        std::rotate(m_longest.begin(), m_longest.end() - 1, m_longest.end());
        m_longest[0] = 0;
    }
    m_week = week;
}

std::uint32_t LongestGaps::usual() const {
    auto longest = m_longest;
    std::ranges::sort(longest, std::greater());
    const auto weeks = std::ranges::count_if(longest, [](auto gap) { return gap > 0; });
    return weeks >= kEnoughWeeks ? longest[1] : longest[0];
}

}  // namespace quorbel
