#include "events/NewestButton.h"

#include "core/ArrangedEvents.h"
#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"

#include <QEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QStyle>
#include <QTableView>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr int kMargin = 4;
const QColor kAccent(0x00, 0x57, 0xad);

}  // namespace

NewestButton::NewestButton(ArrangedEvents &events, QTableView &table)
    : QPushButton(&table), m_events(events), m_table(table) {
    setObjectName(QStringLiteral("newestEvents"));
    setProperty("role", QStringLiteral("pill"));
    setFocusPolicy(Qt::NoFocus);
    setIcon(lineIcon(QStringLiteral("newest"), kAccent));
    hide();
    connect(this, &QAbstractButton::clicked, &table, &QAbstractItemView::scrollToTop);
    connect(table.verticalScrollBar(), &QScrollBar::valueChanged, this, &NewestButton::look);
    const QAbstractItemModel *model = table.model();
    connect(model, &QAbstractItemModel::rowsInserted, this, &NewestButton::noteArrival);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &NewestButton::lookLater);
    connect(model, &QAbstractItemModel::modelReset, this, &NewestButton::lookLater);
    table.installEventFilter(this);
}

void NewestButton::noteArrival() {
    if (m_table.verticalScrollBar()->value() == 0) {
        m_seen = m_events.idAt(0);
    } else {
        lookLater();
    }
}

void NewestButton::lookLater() {
    if (!std::exchange(m_lookIsDue, true)) {
        QMetaObject::invokeMethod(this, &NewestButton::look, Qt::QueuedConnection);
    }
}

void NewestButton::look() {
    m_lookIsDue = false;
    if (m_events.size() == 0) {
        hide();
        return;
    }
    const int last = static_cast<int>(m_events.size()) - 1;
    const int top = std::min(m_table.verticalScrollBar()->value(), last);
    m_seen = std::max(m_seen, m_events.idAt(static_cast<std::size_t>(top)));
    tell(static_cast<int>(m_events.placeOf(m_seen)));
}

void NewestButton::tell(int count) {
    setVisible(count > 0);
    if (count == 0) {
        return;
    }
    setText(tr("%1 new").arg(shortCountText(count)));
    const QString exactly =
        count == 1 ? tr("1 new event") : tr("%1 new events", nullptr, count).arg(countText(count));
    setAccessibleName(tr("Go to the newest: %1 above").arg(exactly));
    setToolTip(tr("%1 above; go to the newest (Ctrl+Home)").arg(exactly));
    place();
}

void NewestButton::place() {
    const QRect header = m_table.horizontalHeader()->geometry();
    const QSize size(sizeHint().width(), std::min(sizeHint().height(), header.height()));
    const int right = header.right() - kMargin;
    const QRect place(std::max(header.left(), right - size.width()),
                      header.top() + (header.height() - size.height()) / 2,
                      std::min(size.width(), header.width()), size.height());
    setGeometry(QStyle::visualRect(m_table.layoutDirection(), header, place));
    raise();
}

bool NewestButton::eventFilter(QObject *watched, QEvent *event) {
    if (isVisible() && (event->type() == QEvent::Resize || event->type() == QEvent::FontChange ||
                        event->type() == QEvent::LayoutRequest)) {
        QMetaObject::invokeMethod(this, &NewestButton::place, Qt::QueuedConnection);
    }
    return QPushButton::eventFilter(watched, event);
}

}  // namespace quorbel
