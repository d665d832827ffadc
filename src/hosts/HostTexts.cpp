#include "hosts/HostTexts.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace quorbel {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

}  // namespace

QString HostTexts::silence(std::int64_t seconds) {
    if (seconds < kMinute) {
        return tr("under 1 min");
    }
    if (seconds < kHour) {
        return tr("%1 min").arg(seconds / kMinute);
    }
    if (seconds < 2 * kDay) {
        return tr("%1 h %2 min").arg(seconds / kHour).arg(seconds % kHour / kMinute);
    }
    return tr("%1 d %2 h").arg(seconds / kDay).arg(seconds % kDay / kHour);
}

QString HostTexts::gap(double seconds) {
    const auto whole = std::max<std::int64_t>(std::llround(seconds), 1);
    if (whole < kMinute * 3 / 2) {
        return tr("%1 s").arg(whole);
    }
    if (whole < kHour * 5 / 6) {
        return tr("%1 min").arg((whole + kMinute / 2) / kMinute);
    }
    return whole < kDay * 5 / 6 ? tr("%1 h").arg((whole + kHour / 2) / kHour)
                                : tr("%1 d").arg((whole + kDay / 2) / kDay);
}

QString HostTexts::since(std::int64_t moment, std::int64_t now) {
    const QDateTime time = QDateTime::fromSecsSinceEpoch(moment);
    const QDate today = QDateTime::fromSecsSinceEpoch(now).date();
    const QLocale locale;
    if (time.date() == today) {
        return tr("since %1").arg(locale.toString(time.time(), QStringLiteral("HH:mm")));
    }
    const QString pattern = time.date().year() == today.year() ? tr("d MMM", "date pattern")
                                                               : tr("d MMM yyyy", "date pattern");
    return tr("since %1").arg(locale.toString(time.date(), pattern));
}

QString HostTexts::habit(const HostRecord &host, bool isExpected) {
    if (!isExpected) {
        return tr("Not expected any more.");
    }
    switch (host.habit.kind) {
        case HostHabit::Kind::kLearning:
            return tr("Not known for long enough to say what is usual.");
        case HostHabit::Kind::kIrregular:
            return tr("Sends too irregularly for its silence to say anything.");
        case HostHabit::Kind::kSteady:
            return tr("Usually every %1, by day and by night. Overdue after %2.")
                .arg(gap(host.usualGap().value_or(0)), gap(host.habit.explained));
        case HostHabit::Kind::kAtHours:
            break;
    }
    return tr("Usually every %1, in certain hours. Overdue when it misses %2 of these.")
        .arg(gap(host.usualGap().value_or(0)))
        .arg(static_cast<int>(std::ceil(host.habit.explained)));
}

QString HostTexts::share(double share) {
    const double percent = share * 100;
    const bool isSmall = percent > 0 && percent < 10;
    return tr("%1 %").arg(
        QLocale().toString(isSmall ? std::max(percent, 0.1) : percent, 'f', isSmall ? 1 : 0));
}

QString HostTexts::roundShare(double share) {
    if (share > 0 && share < 0.01) {
        return tr("< 1 %");
    }
    return tr("%1 %").arg(QLocale().toString(share * 100, 'f', 0));
}

}  // namespace quorbel
