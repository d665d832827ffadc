#include "events/timeline/TimelineFold.h"

#include "events/timeline/Timeline.h"
#include "events/timeline/TimelineMenu.h"
#include "platform/gui/Icons.h"
#include "platform/gui/WindowMemory.h"

#include <QAbstractButton>
#include <QEvent>
#include <QShortcut>

namespace quorbel {

namespace {

const QKeySequence kShortcut(QStringLiteral("Ctrl+T"));
const QString kKey = QStringLiteral("Timeline/shown");

}  // namespace

TimelineFold::TimelineFold(Timeline &timeline, QAbstractButton &button, ArrangedEvents &events,
                           EventHold &hold)
    : m_timeline(timeline), m_button(button), m_isWanted(remembered(kKey, false).toBool()) {
    m_timeline.attach(events, hold);
    new TimelineMenu(m_timeline);
    m_button.setCheckable(true);
    m_button.setFocusPolicy(Qt::TabFocus);  // a click leaves the keyboard with the table
    m_button.setIcon(lineIcon(QStringLiteral("timeline")));
    m_button.setAccessibleName(tr("Timeline"));
    connect(&m_button, &QAbstractButton::clicked, this, &TimelineFold::take);
    new QShortcut(kShortcut, &m_button, &m_button, [this] { m_button.click(); });
    m_timeline.parentWidget()->installEventFilter(this);
    look();
}

TimelineFold::~TimelineFold() {
    m_timeline.detach();
}

bool TimelineFold::isWindowLow() const {
    return m_timeline.window()->height() < kLowWindow;
}

void TimelineFold::take(bool isOpen) {
    m_isWanted = isOpen;
    m_isOpenedInLowWindow = isOpen && isWindowLow();
    remember(kKey, isOpen);
    look();
}

void TimelineFold::look() {
    const bool isOpen = m_isWanted && (m_isOpenedInLowWindow || !isWindowLow());
    m_timeline.setVisible(isOpen);
    m_button.setChecked(isOpen);
    const QString tip = isOpen ? tr("Hide the timeline") : tr("Show when the events happened");
    m_button.setToolTip(
        QStringLiteral("%1 (%2)").arg(tip, kShortcut.toString(QKeySequence::NativeText)));
    m_button.setAccessibleDescription(m_button.toolTip());
}

bool TimelineFold::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show) {
        look();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quorbel
