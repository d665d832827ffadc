#include "events/find/FindRatings.h"

#include "common/Severity.h"
#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace quorbel {

namespace {

/// Of a button by its place.
EventRating ratingAt(std::size_t place) {
    return static_cast<EventRating>(FindRatings::kCount - place);
}

QString nameAt(std::size_t place) {
    return toQString(severityLevelName(ratingAt(place) - 1));
}

}  // namespace

FindRatings::FindRatings(QWidget *parent) : QWidget(parent) {
    setObjectName(QStringLiteral("findRating"));
    setAccessibleName(tr("Ratings"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    for (std::size_t place = 0; place < kCount; ++place) {
        auto *button = new QPushButton(this);
        m_buttons[place] = button;
        button->setObjectName(QStringLiteral("findRating") + nameAt(place));
        button->setProperty("role", QStringLiteral("rating"));
        button->setIcon(severityIcon(nameAt(place)));
        button->setAutoDefault(false);
        button->setCheckable(true);
        connect(button, &QAbstractButton::toggled, this, &FindRatings::changed);
        row->addWidget(button);
    }
    showCounts({});
}

void FindRatings::addTo(EventQuery &query) const {
    for (std::size_t place = 0; place < kCount; ++place) {
        query.ratings[ratingAt(place)] = m_buttons[place]->isChecked();
    }
}

void FindRatings::takeFrom(const EventQuery &query) {
    for (std::size_t place = 0; place < kCount; ++place) {
        m_buttons[place]->setChecked(query.ratings[ratingAt(place)]);
    }
}

void FindRatings::clear() {
    for (QPushButton *button : m_buttons) {
        button->setChecked(false);
    }
}

void FindRatings::showCounts(const std::array<std::size_t, kRatingCount> &counts) {
    for (std::size_t place = 0; place < kCount; ++place) {
        const auto count = static_cast<qint64>(counts[ratingAt(place)]);
        const QString name = knownName(nameAt(place));
        m_buttons[place]->setText(shortCountText(count));
        m_buttons[place]->setAccessibleName(QStringLiteral("%1: %2").arg(name, countText(count)));
        m_buttons[place]->setToolTip(
            tr("Show only the events rated %1: %2").arg(name, countText(count)));
    }
}

}  // namespace quorbel
