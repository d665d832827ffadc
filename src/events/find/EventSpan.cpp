#include "events/find/EventSpan.h"

#include <QCoreApplication>

namespace quorbel {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

QString tr(const char *text) {
    return QCoreApplication::translate("EventSpan", text);
}

EventSpan::Moments wholeDay(const QDate &day) {
    return {day.startOfDay().toSecsSinceEpoch(), day.addDays(1).startOfDay().toSecsSinceEpoch()};
}

EventSpan::Moments since(std::int64_t seconds, const QDateTime &now) {
    return {now.toSecsSinceEpoch() / kMinute * kMinute - seconds, std::nullopt};
}

QString momentText(const QDateTime &moment, const QDate &known, const QString &clock) {
    return moment.toString(moment.date() == known ? clock : QStringLiteral("yyyy-MM-dd ") + clock);
}

}  // namespace

std::optional<MovingSpan> EventSpan::moving() const {
    if (kind == Kind::kAny || kind == Kind::kFromTo) {
        return std::nullopt;
    }
    return static_cast<MovingSpan>(static_cast<int>(kind) - static_cast<int>(Kind::kLastHour));
}

EventSpan::Moments EventSpan::momentsAt(const QDateTime &now) const {
    switch (kind) {
        case Kind::kLastHour:
            return since(kHour, now);
        case Kind::kToday:
            return wholeDay(now.date());
        case Kind::kYesterday:
            return wholeDay(now.date().addDays(-1));
        case Kind::kLastDay:
            return since(kDay, now);
        case Kind::kFromTo:
            return {from.toSecsSinceEpoch(), to.toSecsSinceEpoch()};
        default:
            return {};
    }
}

QString EventSpan::clockFormat() const {
    const auto isWhole = [](const QDateTime &moment) { return moment.time().second() == 0; };
    return isWhole(from) && isWhole(to) ? QStringLiteral("HH:mm") : QStringLiteral("HH:mm:ss");
}

EventQuery queryAt(const EventQuery &query, const QDateTime &now) {
    EventQuery at = query;
    at.spans.reset();
    for (std::size_t span = 0; span < kMovingSpanCount; ++span) {
        if (query.spans[span]) {
            const EventSpan::Moments moments =
                EventSpan::of(static_cast<MovingSpan>(span)).momentsAt(now);
            EventQuery inSpan;
            inSpan.from = moments.from;
            inSpan.until = moments.until;
            at = bothOf(at, inSpan);
        }
    }
    return at;
}

QString EventSpan::textAt(const QDateTime &now) const {
    switch (kind) {
        case Kind::kLastHour:
            return tr("Last hour");
        case Kind::kToday:
            return tr("Today");
        case Kind::kYesterday:
            return tr("Yesterday");
        case Kind::kLastDay:
            return tr("Last 24 hours");
        case Kind::kFromTo:
            return momentText(from, now.date(), clockFormat()) + QStringLiteral(" – ") +
                   momentText(to, from.date(), clockFormat());
        default:
            return {};
    }
}

}  // namespace quorbel
