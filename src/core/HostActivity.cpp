#include "core/HostActivity.h"

namespace quorbel {

void HostActivity::begin(std::int64_t moment, LocalClock::Hour hour) {
    m_first = moment;
    m_firstHour = hour;
    m_lastHour = hour - 1;
}

void HostActivity::advance(LocalClock::Hour hour) {
    m_firstHour = std::min(m_firstHour, hour);
    for (LocalClock::Hour h = std::max(m_lastHour + 1, hour - kWords * kBits + 1); h < hour; ++h) {
        m_hours[word(h)] &= ~(std::uint64_t{1} << bit(h));
    }
    m_hours[word(hour)] |= std::uint64_t{1} << bit(hour);
    m_lastHour = hour;
}

}  // namespace quorbel
