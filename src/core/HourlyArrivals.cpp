#include "core/HourlyArrivals.h"

#include <chrono>
#include <ctime>

namespace quorbel {

namespace {

constexpr std::int64_t kQuarter = 900;  // clocks are changed at one, everywhere
constexpr std::int64_t kHour = 3600;
/// No clock is changed by as much as that is more than kHours.
constexpr std::int64_t kTooOld = (HourlyArrivals::kHours + 4) * kHour;
constexpr HourlyArrivals::Hour kMostAhead = 8;

}  // namespace

HourlyArrivals::Hour HourlyArrivals::hourOf(std::int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm local{};
    localtime_r(&moment, &local);
    const std::chrono::sys_days day = std::chrono::year(local.tm_year + 1900) /
                                      std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1) /
                                      std::chrono::day(static_cast<unsigned>(local.tm_mday));
    return Hour{day.time_since_epoch().count()} * 24 + local.tm_hour;
}

HourlyArrivals::Hour HourlyArrivals::KnownHour::of(std::int64_t seconds) {
    const std::int64_t quarter = seconds / kQuarter;
    if (quarter != m_quarter) {
        m_quarter = quarter;
        m_hour = hourOf(seconds);
    }
    return m_hour;
}

void HourlyArrivals::add(const std::bitset<kSeverityClassCount> &classes, std::int64_t seconds,
                         std::int64_t now) {
    // One that is later than now came before the clock was put back.
    const bool isLatest = seconds > m_latest.value_or(0) || m_latest.value_or(0) > now;
    if (seconds <= now && isLatest) {
        m_latest = seconds;
    }
    if (seconds < now - kTooOld || seconds > now + (kMostAhead + 4) * kHour) {
        return;
    }
    const Hour hour = m_eventHour.of(seconds);
    const Hour current = m_clockHour.of(now);
    if (hour <= current - kHours || hour > current + kMostAhead) {
        return;
    }
    Counts &counts = m_counts.at(placeOf(hour));
    if (counts.hour != hour) {
        counts = {hour, {}};
    }
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        counts.byClass.at(i) += static_cast<std::uint64_t>(classes[i]);
    }
}

void HourlyArrivals::add(const HourlyArrivals &others) {
    if (others.m_latest && *others.m_latest > m_latest.value_or(0)) {
        m_latest = others.m_latest;
    }
    for (std::size_t place = 0; place < kPlaces; ++place) {
        const Counts &theirs = others.m_counts.at(place);
        if (theirs.byClass == Counts{}.byClass) {
            continue;
        }
        Counts &counts = m_counts.at(place);
        if (counts.hour != theirs.hour) {
            counts = {theirs.hour, {}};
        }
        for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
            counts.byClass.at(i) += theirs.byClass.at(i);
        }
    }
}

std::uint64_t HourlyArrivals::count(std::size_t severityClass, Hour hour) const {
    const Counts &counts = m_counts.at(placeOf(hour));
    return counts.hour == hour ? counts.byClass.at(severityClass) : 0;
}

}  // namespace quorbel
