#include "events/timeline/TimeTexts.h"

#include "events/timeline/TimeColumns.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::TimeTexts)
};

constexpr std::int64_t kDay = 86'400;

/// Between marks of the clock, in seconds.
constexpr std::array<std::int64_t, 15> kClockDistances{
    1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1800, 3600, 10800, 21600, 43200};

/// Between marks of the calendar.
struct Days {
    int days;
    int months;
    [[nodiscard]] std::int64_t seconds() const { return (days + months * 30) * kDay; }
};
constexpr std::array<Days, 14> kCalendarDistances{{{1, 0},
                                                   {2, 0},
                                                   {7, 0},
                                                   {14, 0},
                                                   {0, 1},
                                                   {0, 3},
                                                   {0, 6},
                                                   {0, 12},
                                                   {0, 24},
                                                   {0, 60},
                                                   {0, 120},
                                                   {0, 600},
                                                   {0, 1200},
                                                   {0, 12000}}};

QDateTime local(std::int64_t moment) {
    return QDateTime::fromSecsSinceEpoch(moment);
}

QString dayText(const QDate &date) {
    //: A day of the timeline: see QDate::toString().
    return QLocale().toString(date, Texts::tr("d MMM"));
}

QString clockText(const QDateTime &time, std::int64_t precision) {
    return time.toString(precision < 60 ? QStringLiteral("HH:mm:ss") : QStringLiteral("HH:mm"));
}

/// In sight and on the calendar.
std::int64_t firstMoment(const TimeAxis &axis) {
    return std::max<std::int64_t>(axis.momentAt(0), 0);
}

std::vector<TimeTick> clockTicks(const TimeAxis &axis, int width, std::int64_t distance) {
    std::vector<TimeTick> ticks;
    const TimeColumns marks(distance, clockOffsetAt(axis.range().until - 1));
    const std::int64_t end = axis.momentAt(width);
    for (std::int64_t mark = marks.columnOf(firstMoment(axis) + distance - 1);; ++mark) {
        const std::int64_t moment = marks.startOf(mark);
        if (moment >= end) {
            return ticks;
        }
        const QDateTime time = local(moment);
        const bool isMidnight = time.time().msecsSinceStartOfDay() == 0;
        ticks.push_back(
            {axis.xOf(moment), isMidnight ? dayText(time.date()) : clockText(time, distance)});
    }
}

/// The first day of the week, month or run of years in which the date is.
QDate roundedDown(const QDate &date, const Days &distance) {
    if (distance.months == 0) {
        return date.addDays(-(date.toJulianDay() % distance.days));
    }
    const int months = date.year() * 12 + date.month() - 1;
    const int rounded = months - months % distance.months;
    return {rounded / 12, rounded % 12 + 1, 1};
}

QString dateText(const QDate &date, const Days &distance) {
    if (distance.months == 0) {
        return dayText(date);
    }
    return distance.months < 12 ? QLocale().toString(date, Texts::tr("MMM yyyy"))
                                : QString::number(date.year());
}

std::vector<TimeTick> calendarTicks(const TimeAxis &axis, int width, const Days &distance) {
    std::vector<TimeTick> ticks;
    const std::int64_t end = axis.momentAt(width);
    QDate date = roundedDown(local(firstMoment(axis)).date(), distance);
    for (;; date = date.addDays(distance.days).addMonths(distance.months)) {
        const std::int64_t moment = date.startOfDay().toSecsSinceEpoch();
        if (moment >= end) {
            return ticks;
        }
        if (const int x = axis.xOf(moment); x >= 0) {
            ticks.push_back({x, dateText(date, distance)});
        }
    }
}

}  // namespace

std::int64_t clockOffsetAt(std::int64_t moment) {
    return local(moment).offsetFromUtc();
}

std::vector<TimeTick> ticksOf(const TimeAxis &axis, int width, int distance) {
    const auto isFarEnough = [&](std::int64_t seconds) {
        return seconds * axis.columnWidth() >= distance * axis.step();
    };
    if (const auto *clock = std::ranges::find_if(kClockDistances, isFarEnough);
        clock != kClockDistances.end()) {
        return clockTicks(axis, width, *clock);
    }
    const auto *days = std::ranges::find_if(kCalendarDistances, isFarEnough, &Days::seconds);
    return calendarTicks(axis, width,
                         days == kCalendarDistances.end() ? kCalendarDistances.back() : *days);
}

QString spanText(const TimeSpan &span, const TimeAxis &axis) {
    const QDateTime from = local(span.from);
    const QDateTime until = local(span.until);
    const std::int64_t precision = span.from % 60 == 0 && span.until % 60 == 0 ? 60 : 1;
    const TimeSpan range = axis.range();
    const bool needsDays = range.until - range.from > kDay;
    const auto text = [&](const QDateTime &time, bool withDay) {
        const bool withYear = range.until - range.from > 300 * kDay;
        const QString day = withYear ? QLocale().toString(time.date(), Texts::tr("d MMM yyyy"))
                                     : dayText(time.date());
        return (withDay ? day + QLatin1Char(' ') : QString()) + clockText(time, precision);
    };
    return text(from, needsDays) + QStringLiteral(" – ") +
           text(until, needsDays && from.date() != until.date());
}

}  // namespace quorbel
