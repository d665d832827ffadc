#include "events/timeline/TimelineMenu.h"

#include "events/timeline/Timeline.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/WindowMemory.h"

#include <QAction>
#include <QActionGroup>
#include <QContextMenuEvent>
#include <QMenu>

namespace quorbel {

namespace {

const QString kKey = QStringLiteral("Timeline/stackedBy");

}  // namespace

TimelineMenu::TimelineMenu(Timeline &timeline)
    : QObject(&timeline), m_timeline(timeline), m_menu(new LetteredMenu(&timeline)) {
    m_menu->setObjectName(QStringLiteral("timelineMenu"));
    auto *group = new QActionGroup(m_menu);
    add("stackByRating", tr("Stack by &Rating"), EventGrouping::kRating);
    add("stackByHost", tr("Stack by &Host"), EventGrouping::kHost);
    add("stackByFacility", tr("Stack by &Facility"), EventGrouping::kFacility);
    const QString chosen = remembered(kKey).toString();
    for (QAction *action : m_menu->actions()) {
        group->addAction(action);
        if (action->objectName() == chosen) {
            action->trigger();
        }
    }
    if (group->checkedAction() == nullptr) {
        m_menu->actions().first()->setChecked(true);
    }
    connect(group, &QActionGroup::triggered, this,
            [](const QAction *action) { remember(kKey, action->objectName()); });
    m_timeline.installEventFilter(this);
}

void TimelineMenu::add(const char *name, const QString &text, EventGrouping grouping) {
    QAction *action = m_menu->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setCheckable(true);
    connect(action, &QAction::triggered, &m_timeline,
            [this, grouping] { m_timeline.setGrouping(grouping); });
}

bool TimelineMenu::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::ContextMenu) {
        m_menu->popup(static_cast<QContextMenuEvent *>(event)->globalPos());
        return true;
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quorbel
