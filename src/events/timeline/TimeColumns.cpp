#include "events/timeline/TimeColumns.h"

#include <QDateTime>

#include <array>

namespace quorbel {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 86'400;
constexpr std::int64_t kMonth = 2'629'746;  // in the mean of the calendar
constexpr std::int64_t kYear = 12 * kMonth;

constexpr std::size_t kMostKept = 8192;

constexpr std::array<std::int64_t, 32> kLengths{
    1,          2,           5,           10,           15,           30,
    kMinute,    2 * kMinute, 5 * kMinute, 10 * kMinute, 15 * kMinute, 30 * kMinute,
    kHour,      2 * kHour,   3 * kHour,   6 * kHour,    12 * kHour,   kDay,
    2 * kDay,   4 * kDay,    7 * kDay,    14 * kDay,    kMonth,       3 * kMonth,
    6 * kMonth, kYear,       2 * kYear,   5 * kYear,    10 * kYear,   20 * kYear,
    50 * kYear, 100 * kYear};

}  // namespace

std::span<const std::int64_t> TimeColumns::lengths() {
    return kLengths;
}

TimeColumns::TimeColumns(std::int64_t length, std::int64_t clockOffset)
    : m_length(length),
      m_clockOffset(clockOffset),
      m_months(length < kMonth ? 0 : static_cast<int>(length / kMonth)) {}

std::int64_t TimeColumns::startOf(std::int64_t column) const {
    if (m_length <= kHour) {
        return column * m_length - m_clockOffset;
    }
    if (m_starts.size() == kMostKept) {
        m_starts.clear();
    }
    const auto [start, isNew] = m_starts.try_emplace(column);
    if (isNew) {
        start->second = askCalendar(column);
    }
    return start->second;
}

std::int64_t TimeColumns::askCalendar(std::int64_t column) const {
    if (m_months > 0) {
        const std::int64_t month = column * m_months;
        const std::int64_t year = floorDivide(month, 12);
        return QDate(static_cast<int>(year), static_cast<int>(month - 12 * year) + 1, 1)
            .startOfDay()
            .toSecsSinceEpoch();
    }
    // Days are counted as the calendar's marks are, from a Monday.
    const std::int64_t local = column * m_length;
    const std::int64_t day = floorDivide(local, kDay);
    const QTime time = QTime::fromMSecsSinceStartOfDay(static_cast<int>(local - day * kDay) * 1000);
    const QDate date = QDate::fromJulianDay(day);
    return (time == QTime(0, 0) ? date.startOfDay() : QDateTime(date, time)).toSecsSinceEpoch();
}

std::int64_t TimeColumns::guess(std::int64_t moment) const {
    const QDateTime local = QDateTime::fromSecsSinceEpoch(moment);
    if (m_months > 0) {
        return floorDivide(std::int64_t{local.date().year()} * 12 + local.date().month() - 1,
                           m_months);
    }
    return floorDivide(
        local.date().toJulianDay() * kDay + local.time().msecsSinceStartOfDay() / 1000, m_length);
}

std::int64_t TimeColumns::columnOf(std::int64_t moment) const {
    if (m_length <= kHour) {
        return floorDivide(moment + m_clockOffset, m_length);
    }
    // A clock that is set back reads the same twice.
    std::int64_t column = guess(moment);
    while (startOf(column) > moment) {
        --column;
    }
    while (startOf(column + 1) <= moment) {
        ++column;
    }
    return column;
}

}  // namespace quorbel
