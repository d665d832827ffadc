#include "events/find/QueryText.h"

#include "common/Severity.h"
#include "core/SavedFilterText.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QStringList>

#include <array>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::QueryText)
};

/// By MovingSpan.
constexpr std::array<const char *, kMovingSpanCount> kSpans{
    QT_TRANSLATE_NOOP("quorbel::QueryText", "last hour"),
    QT_TRANSLATE_NOOP("quorbel::QueryText", "today"),
    QT_TRANSLATE_NOOP("quorbel::QueryText", "yesterday"),
    QT_TRANSLATE_NOOP("quorbel::QueryText", "last 24 hours")};

QString textOf(const TextCondition &condition) {
    const QString text = paintedRow(toQString(condition.pattern.text));
    if (condition.pattern.isExpression) {
        return (condition.isNegated ? Texts::tr("does not match %1") : Texts::tr("matches %1"))
            .arg(text);
    }
    return (condition.isNegated ? Texts::tr("without “%1”") : Texts::tr("contains “%1”")).arg(text);
}

QString shownMoment(std::int64_t moment) {
    return QDateTime::fromSecsSinceEpoch(moment).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QStringList spansOf(const EventQuery &query) {
    QStringList names;
    for (std::size_t span = 0; span < kMovingSpanCount; ++span) {
        if (query.spans[span]) {
            names += Texts::tr(kSpans[span]);
        }
    }
    return names;
}

QString ratingsOf(const EventQuery &query) {
    QStringList names;
    for (std::size_t rating = kRatingCount; rating > 0; --rating) {
        if (query.ratings[rating - 1]) {
            names += knownName(ratingName(static_cast<EventRating>(rating - 1)));
        }
    }
    return names.join(Texts::tr(" or "));
}

QString classesOf(const EventQuery &query) {
    QStringList names;
    for (std::uint8_t number = 0; number < kSeverityClassCount; ++number) {
        if (query.classes[number]) {
            names += knownName(kSeverityClasses.at(number).label);
        }
    }
    return Texts::tr("only %1").arg(names.join(Texts::tr(" or ")));
}

}  // namespace

QString queryText(const EventQuery &query) {
    QStringList parts;
    for (const TextCondition &condition : query.texts) {
        parts += textOf(condition);
    }
    if (query.ratings.any()) {
        parts += ratingsOf(query);
    }
    if (query.leastSeverity) {
        parts += Texts::tr("%1 and worse").arg(knownName(severityName(*query.leastSeverity)));
    }
    if (query.classes.any()) {
        parts += classesOf(query);
    }
    if (!query.facility.empty()) {
        parts += Texts::tr("facility %1").arg(paintedRow(toQString(query.facility)));
    }
    if (!query.host.empty()) {
        parts += Texts::tr("host %1").arg(paintedRow(toQString(query.host)));
    }
    if (query.from) {
        parts += Texts::tr("from %1").arg(shownMoment(*query.from));
    }
    if (query.until) {
        parts += Texts::tr("before %1").arg(shownMoment(*query.until));
    }
    parts += spansOf(query);
    return parts.join(QStringLiteral("; "));
}

}  // namespace quorbel
