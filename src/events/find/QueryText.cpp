#include "events/find/QueryText.h"

#include "core/SavedFilterText.h"
#include "events/find/EventSpan.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QStringList>

namespace quorbel {

namespace {

QString tr(const char *text) {
    return QCoreApplication::translate("quorbel::QueryText", text);
}

QString textOf(const TextCondition &condition) {
    const QString text = paintedRow(toQString(condition.pattern.text));
    if (condition.pattern.isExpression) {
        return (condition.isNegated ? tr("does not match %1") : tr("matches %1")).arg(text);
    }
    return (condition.isNegated ? tr("without “%1”") : tr("contains “%1”")).arg(text);
}

QString shownMoment(std::int64_t moment) {
    return QDateTime::fromSecsSinceEpoch(moment).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QStringList spansOf(const EventQuery &query) {
    QStringList names;
    for (std::size_t span = 0; span < kMovingSpanCount; ++span) {
        if (query.spans[span]) {
            names += EventSpan::of(static_cast<MovingSpan>(span)).textAt({}).toLower();
        }
    }
    return names;
}

QString ratingsOf(const EventQuery &query) {
    QStringList names;
    for (std::size_t rating = kRatingCount; rating > 0; --rating) {
        if (query.ratings[rating - 1]) {
            names += toQString(ratingName(static_cast<EventRating>(rating - 1)));
        }
    }
    return names.join(tr(" or "));
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
        parts += tr("%1 and worse").arg(toQString(severityName(*query.leastSeverity)));
    }
    if (!query.facility.empty()) {
        parts += tr("facility %1").arg(paintedRow(toQString(query.facility)));
    }
    if (!query.host.empty()) {
        parts += tr("host %1").arg(paintedRow(toQString(query.host)));
    }
    if (query.from) {
        parts += tr("from %1").arg(shownMoment(*query.from));
    }
    if (query.until) {
        parts += tr("before %1").arg(shownMoment(*query.until));
    }
    parts += spansOf(query);
    return parts.join(QStringLiteral("; "));
}

}  // namespace quorbel
