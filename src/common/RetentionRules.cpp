#include "common/RetentionRules.h"

#include "common/SettingsDocument.h"

#include <algorithm>
#include <ctime>
#include <string>

namespace quorbel {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
// Minutes, hours, days, weeks; months are of different lengths.
constexpr std::array<std::int64_t, 4> kUnitSeconds{60, kHour, kDay, 7 * kDay};
constexpr std::int64_t kMonthsUnit = kUnitSeconds.size();
// More than the calendar of any log file; keeps the sums below from overflowing.
constexpr std::int64_t kMostMonths = 12'000;
constexpr std::int64_t kMostSeconds = kMostMonths * 31 * kDay;

int daysOfMonth(int year, int month) {
    std::tm end{};
    end.tm_year = year;
    end.tm_mon = month + 1;
    end.tm_mday = 0;
    end.tm_hour = 12;
    end.tm_isdst = -1;
    std::mktime(&end);
    return end.tm_mday;
}

/// The same time of the day so many months later, on the month's last day when it is too short.
std::int64_t shiftedByMonths(std::int64_t time, int months) {
    const auto moment = static_cast<std::time_t>(time);
    std::tm local{};
    localtime_r(&moment, &local);
    const int month = local.tm_year * 12 + local.tm_mon + months;
    local.tm_year = month / 12;
    local.tm_mon = month % 12;
    if (local.tm_mon < 0) {
        --local.tm_year;
        local.tm_mon += 12;
    }
    local.tm_mday = std::min(local.tm_mday, daysOfMonth(local.tm_year, local.tm_mon));
    local.tm_isdst = -1;
    return std::mktime(&local);
}

}  // namespace

RetentionRules::RetentionRules(const Dictionary &settings) {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const std::string key = "removal" + std::string(kSeverityClasses[i].keyPart);
        const std::int64_t amount = settingInteger(settings, key);
        const std::int64_t unit = settingInteger(settings, key + "Units");
        if (amount <= 0 || unit < 0 || unit > kMonthsUnit) {
            continue;
        }
        if (unit == kMonthsUnit) {
            m_periods[i] = {0, static_cast<int>(std::min(amount, kMostMonths))};
        } else {
            const std::int64_t seconds = kUnitSeconds[static_cast<std::size_t>(unit)];
            m_periods[i] = {std::min(amount, kMostSeconds / seconds) * seconds, 0};
        }
    }
}

bool RetentionRules::keepsAll() const {
    return std::ranges::none_of(m_periods, [](const auto &period) { return period.has_value(); });
}

RetentionRules::Limits RetentionRules::limitsAt(std::int64_t now) const {
    Limits limits;
    std::ranges::transform(m_periods, limits.begin(), [now](const auto &period) {
        return period ? std::optional(before(*period, now)) : std::nullopt;
    });
    return limits;
}

std::int64_t RetentionRules::before(const Period &period, std::int64_t time) {
    return period.seconds != 0 ? time - period.seconds : shiftedByMonths(time, -period.months);
}

std::optional<std::int64_t> RetentionRules::endOf(std::size_t severityClass,
                                                  std::int64_t time) const {
    const auto &period = m_periods[severityClass];
    if (!period) {
        return std::nullopt;
    }
    if (period->seconds != 0) {
        return time + period->seconds;
    }
    std::int64_t end = shiftedByMonths(time, period->months);
    // A month after January 31 is none of the days of February: looked at from each of them, that
    // day is less than a month ago.
    while (before(*period, end) < time) {
        end += kHour;
    }
    return end;
}

std::int64_t RetentionRules::slack(std::size_t severityClass) const {
    const auto &period = m_periods[severityClass];
    if (!period || period->months > 0) {
        return kHour;
    }
    return std::min(period->seconds / 60, kHour);
}

std::optional<std::int64_t> RetentionRules::firstEnd(std::int64_t time) const {
    return firstOf(time, false);
}

std::optional<std::int64_t> RetentionRules::firstRemoval(std::int64_t time) const {
    return firstOf(time, true);
}

std::optional<std::int64_t> RetentionRules::firstOf(std::int64_t time, bool withSlack) const {
    std::optional<std::int64_t> first;
    for (std::size_t i = 0; i < m_periods.size(); ++i) {
        if (const auto end = endOf(i, time)) {
            const std::int64_t moment = *end + (withSlack ? slack(i) : 0);
            first = std::min(first.value_or(moment), moment);
        }
    }
    return first;
}

}  // namespace quorbel
