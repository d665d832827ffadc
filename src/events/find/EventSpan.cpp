#include "events/find/EventSpan.h"

#include <QCoreApplication>

namespace quorbel {

namespace {

constexpr qint64 kDay = 86'400;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::EventSpan)
};

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
    if (kind == Kind::kFromTo) {
        return {from.toSecsSinceEpoch(), to.toSecsSinceEpoch()};
    }
    const auto span = moving();
    return span ? momentsOf(*span, now.toSecsSinceEpoch()) : Moments();
}

QString EventSpan::clockFormat() const {
    const auto isWhole = [](const QDateTime &moment) { return moment.time().second() == 0; };
    return isWhole(from) && isWhole(to) ? QStringLiteral("HH:mm") : QStringLiteral("HH:mm:ss");
}

EventQuery queryAt(const EventQuery &query, const QDateTime &now) {
    return queryAt(query, now.toSecsSinceEpoch());
}

QString EventSpan::textAt(const QDateTime &now) const {
    switch (kind) {
        case Kind::kLastHour:
            return Texts::tr("Last hour");
        case Kind::kToday:
            return Texts::tr("Today");
        case Kind::kYesterday:
            return Texts::tr("Yesterday");
        case Kind::kLastDay:
            return Texts::tr("Last 24 hours");
        case Kind::kFromTo:
            return momentText(from, now.date(), clockFormat()) + QStringLiteral(" – ") +
                   momentText(to, from.date(), clockFormat());
        default:
            return {};
    }
}

QString EventSpan::shortTextAt(const QDateTime &now) const {
    if (kind != Kind::kFromTo) {
        return textAt(now);
    }
    const auto text = [&](const QDateTime &moment, bool hasDay) {
        const bool isThisYear = moment.date().year() == now.date().year();
        const QString day = isThisYear ? QStringLiteral("MM-dd ") : QStringLiteral("yyyy-MM-dd ");
        return moment.toString((hasDay ? day : QString()) + clockFormat());
    };
    return text(from, from.date() != now.date()) + QStringLiteral(" – ") +
           text(to, from.date() != to.date() && from.secsTo(to) >= kDay);
}

}  // namespace quorbel
