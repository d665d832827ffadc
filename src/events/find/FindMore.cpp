#include "events/find/FindMore.h"

#include "events/find/FindChoice.h"
#include "events/find/FindRatings.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/LookProperty.h"
#include "platform/gui/PaintedText.h"

#include <QMenu>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kWidest = 240;
const QColor kAccent(0x00, 0x57, 0xad);

}  // namespace

FindMore::FindMore(FindRatings &ratings, QWidget *parent)
    : QPushButton(parent), m_ratings(ratings) {
    setObjectName(QStringLiteral("findMore"));
    setProperty("role", QStringLiteral("rating"));
    setAutoDefault(false);
    connect(this, &QAbstractButton::clicked, this, &FindMore::openMenu);
}

void FindMore::standFor(const QList<FindChoice *> &choices) {
    m_isForAll = false;
    m_choices = choices;
    setVisible(!choices.isEmpty());
    setIcon({});
    setText(QStringLiteral("···"));
    setAccessibleName(tr("More conditions"));
    setToolTip(tr("More conditions"));
    showState(0);
}

void FindMore::standForAll(const QList<FindChoice *> &choices) {
    m_isForAll = true;
    m_choices = choices;
    setVisible(true);
    const auto inUse = std::ranges::count_if(choices, &FindChoice::isInUse) +
                       std::ranges::count_if(m_ratings.buttons(), &QAbstractButton::isChecked);
    setIcon(lineIcon(QStringLiteral("filter"), inUse > 0 ? kAccent : QColor()));
    setText(inUse > 0 ? QString::number(inUse) : QString());
    setAccessibleName(inUse > 0 ? tr("Conditions, %1 in use").arg(inUse) : tr("Conditions"));
    setToolTip(tr("Rating, severity, facility, host and time"));
    showState(static_cast<int>(inUse));
}

void FindMore::showState(int inUse) {
    setLookProperty(*this, "inUse", inUse > 0);
}

void FindMore::openMenu() {
    auto *menu = new LetteredMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(tr("Conditions"));
    for (QPushButton *rating : m_ratings.buttons()) {
        if (m_isForAll) {
            QAction *action = menu->addAction(rating->icon(), rating->accessibleName());
            action->setCheckable(true);
            action->setChecked(rating->isChecked());
            connect(action, &QAction::toggled, rating, &QAbstractButton::setChecked);
        }
    }
    menu->addSeparator();
    for (FindChoice *choice : std::as_const(m_choices)) {
        QString text = choice->accessibleName();
        text = fontMetrics().elidedText(text, Qt::ElideRight, sizedToFont(kWidest));
        connect(menu->addAction(text.replace(u'&', QStringLiteral("&&")) + QStringLiteral("...")),
                &QAction::triggered, choice, [this, choice] { choice->openBelow(*this); });
    }
    menu->popup(mapToGlobal(QPoint(0, height() + 2)));
}

}  // namespace quorbel
