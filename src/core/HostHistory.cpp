#include "core/HostHistory.h"

#include <algorithm>
#include <optional>

namespace quorbel {

namespace {

constexpr std::size_t kLookedAtForRoom = 16;
/// A host that sends in fewer hours, or about once in each, is known by the hours.
constexpr double kShareOfDense = 1.0 / 6;
constexpr double kManyAnHour = 2;

bool isNewcomer(const HostRecord &host) {
    return host.activity.firstHour() == host.activity.lastHour();
}

}  // namespace

void HostHours::add(LocalClock::Hour hour) {
    for (LocalClock::Hour h = std::max(m_last + 1, hour - kKept + 1); h <= hour; ++h) {
        m_counts[static_cast<std::size_t>(h % kKept)] = 0;
    }
    if (hour <= m_last - kKept) {
        m_counts = {};  // the clock was put back a long way
    }
    m_last = hour;
    ++m_counts[static_cast<std::size_t>(hour % kKept)];
}

std::uint64_t HostHours::sum(LocalClock::Hour first, LocalClock::Hour last) const {
    std::uint64_t sum = 0;
    for (LocalClock::Hour h = std::max(first, m_last - kKept + 1); h <= std::min(last, m_last);
         ++h) {
        sum += m_counts[static_cast<std::size_t>(h % kKept)];
    }
    return sum;
}

std::optional<double> HostRecord::dailyMean(LocalClock::Hour now) const {
    const LocalClock::Hour midnight = LocalClock::midnightBefore(now);
    const LocalClock::Hour end = std::min(midnight, activity.lastHour() + 1);
    const LocalClock::Hour known = end - activity.firstHour();
    if (known < LocalClock::kDay) {
        return std::nullopt;
    }
    return static_cast<double>(arrivals - today(now)) * LocalClock::kDay / known;
}

std::optional<double> HostRecord::usualGap() const {
    if (!habit.isRegular()) {
        return std::nullopt;
    }
    const LocalClock::Hour known = activity.lastHour() - activity.firstHour() + 1;
    const double anHour = static_cast<double>(arrivals) / known / habit.activeShare;
    const bool isDense = habit.activeShare >= kShareOfDense && anHour >= kManyAnHour;
    return LocalClock::kSeconds / (isDense ? anHour : habit.activeShare);
}

const HostRecord *HostHistory::find(std::string_view name) const {
    const auto found = m_index.find(
        hashBytes(name), [&](std::uint32_t number) { return m_hosts[number].name == name; });
    return found ? &m_hosts[*found] : nullptr;
}

HostRecord *HostHistory::makeRoom() {
    HostRecord *least = nullptr;
    for (std::size_t i = 0; i < kLookedAtForRoom; ++i) {
        m_hand = (m_hand + 1) % m_hosts.size();
        HostRecord &host = m_hosts[m_hand];
        if (isNewcomer(host) && (least == nullptr || host.arrivals < least->arrivals)) {
            least = &host;
        }
    }
    ++m_crowdedOut;
    if (least != nullptr) {
        const auto number = static_cast<std::uint32_t>(least - m_hosts.data());
        m_index.erase(hashBytes(least->name), number);
        m_judged[number] = {};
        *least = {};
    }
    return least;
}

HostRecord *HostHistory::place(std::string_view name) {
    if (const HostRecord *known = find(name)) {
        return &m_hosts[static_cast<std::size_t>(known - m_hosts.data())];
    }
    HostRecord *host = nullptr;
    if (m_hosts.size() < kMostHosts) {
        host = &m_hosts.emplace_back();
        m_judged.emplace_back();
    } else {
        host = makeRoom();
    }
    if (host != nullptr) {
        host->name = name;
        m_index.insert(hashBytes(name), static_cast<std::uint32_t>(host - m_hosts.data()));
    }
    return host;
}

void HostHistory::add(std::string_view host, std::int64_t moment, std::uint8_t severityClass) {
    const LocalClock::Hour hour = m_clock.hourOf(moment);
    m_watched.arrive(moment, hour);
    m_all.add(hour);
    if (host.empty() || host.size() > kLongestName) {
        return;
    }
    if (HostRecord *record = place(host)) {
        record->activity.arrive(moment, hour, m_watched.total());
        record->hours.add(hour);
        ++record->arrivals;
        ++record->classes[severityClass];
    }
}

bool HostHistory::judge(std::int64_t now, const std::function<bool()> &isTimeUp) {
    const LocalClock::Hour hour = m_clock.hourOf(now);
    for (std::size_t left = m_hosts.size(); left > 0; --left) {
        m_toJudge = (m_toJudge + 1) % m_hosts.size();
        HostRecord &host = m_hosts[m_toJudge];
        if (const Judged due{host.activity.lastHour(), hour}; m_judged[m_toJudge] != due) {
            m_judged[m_toJudge] = due;
            host.habit = SilenceRule::judge(host.activity, m_watched, hour);
            if (isTimeUp()) {
                return left == 1;
            }
        }
    }
    return true;
}

}  // namespace quorbel
