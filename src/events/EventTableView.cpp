#include "events/EventTableView.h"

#include "events/EventTableModel.h"
#include "platform/gui/KnownText.h"

#include <QFocusEvent>
#include <QHeaderView>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace quorbel {

namespace {

// The longest texts that columns other than the message's usually have.
constexpr std::array<std::string_view, 4> kUsualTexts = {
    "Moderate", "30.12.2026 10:30:30 PM", "Authpriv.Informational", "255.255.255.255"};
constexpr int kLongestAddress = 39;  // of IPv6, written out
constexpr int kMessageShare = 30;    // average characters
constexpr int kTextMargins = 10;

}  // namespace

EventTableView::EventTableView(QWidget *parent) : RowTableView(parent) {
    setHint(
        tr("No events yet.\nPoint the syslog output of your devices at this machine, and they "
           "appear here within a second."));
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column) {
        // The last one follows from the others.
        if (!m_isFitting && column != EventTableModel::kMessage) {
            m_isSetByUser = true;
            fitColumns();
        }
    });
    connect(horizontalHeader(), &QHeaderView::sectionMoved, this, [this] {
        m_isSetByUser = true;
        // The header gives the last column its rest only now.
        QMetaObject::invokeMethod(this, &EventTableView::makeRoomForMessage, Qt::QueuedConnection);
    });
}

void EventTableView::setModel(QAbstractItemModel *model) {
    RowTableView::setModel(model);
    ensurePolished();  // for the font of the style sheet
    const QScopedValueRollback fitting(m_isFitting, true);
    for (std::size_t i = 0; i < kUsualTexts.size(); ++i) {
        const auto column = static_cast<int>(i);
        const QString title = model->headerData(column, Qt::Horizontal).toString();
        setColumnWidth(column, std::max(widthFor(knownName(kUsualTexts[i])), widthFor(title)));
    }
    const int image = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this) + kTextMargins;
    setColumnWidth(EventTableModel::kRating, columnWidth(EventTableModel::kRating) + image);
    m_narrowHost = m_widestHost = columnWidth(EventTableModel::kHost);
    m_isSetByUser = false;
}

int EventTableView::widthFor(const QString &text) const {
    return fontMetrics().horizontalAdvance(text) + kTextMargins;
}

int EventTableView::widestHostInSight() const {
    int widest = 0;
    const int bottom = rowAt(viewport()->height() - 1);
    const int last = bottom < 0 && model() != nullptr ? model()->rowCount() - 1 : bottom;
    for (int row = rowAt(0); row >= 0 && row <= last; ++row) {
        const QString host = model()->index(row, EventTableModel::kHost).data().toString();
        widest = std::max(widest, widthFor(host.left(kLongestAddress)));
    }
    return widest;
}

void EventTableView::paintEvent(QPaintEvent *event) {
    RowTableView::paintEvent(event);
    if (m_isSetByUser) {
        return;
    }
    if (const int widest = widestHostInSight(); widest > m_widestHost) {
        m_widestHost = widest;
        QMetaObject::invokeMethod(this, &EventTableView::fitColumns, Qt::QueuedConnection);
    }
}

void EventTableView::resizeEvent(QResizeEvent *event) {
    RowTableView::resizeEvent(event);
    fitColumns();
}

void EventTableView::fitColumns() {
    if (model() == nullptr) {
        return;
    }
    const QScopedValueRollback fitting(m_isFitting, true);
    QHeaderView *header = horizontalHeader();
    const int last = header->logicalIndex(header->count() - 1);
    const int share = leastWidth(last);
    const int width = viewport()->width() - share;
    if (!m_isSetByUser) {
        const int room = width - header->sectionPosition(EventTableModel::kHost);
        setColumnWidth(EventTableModel::kHost, std::clamp(room, m_narrowHost, m_widestHost));
    }
    // In a narrow window the table scrolls sideways, rather than show a message of a few letters.
    const bool hasRoom = header->sectionPosition(last) <= width;
    if (hasRoom != header->stretchLastSection()) {
        header->setStretchLastSection(hasRoom);
        setColumnWidth(last, share);
    }
}

int EventTableView::leastWidth(int column) const {
    return column == EventTableModel::kMessage
               ? kMessageShare * fontMetrics().averageCharWidth()
               : widthFor(QString::fromLatin1(kUsualTexts[static_cast<std::size_t>(column)]));
}

/// Where the message does not stand last any more, it takes the rest from there.
void EventTableView::makeRoomForMessage() {
    fitColumns();
    const QHeaderView *header = horizontalHeader();
    const int last = header->logicalIndex(header->count() - 1);
    const int message = columnWidth(EventTableModel::kMessage);
    const int share = leastWidth(EventTableModel::kMessage);
    if (last != EventTableModel::kMessage && message <= share) {
        const int others = header->sectionPosition(last) - message + leastWidth(last);
        setColumnWidth(EventTableModel::kMessage, std::max(share, viewport()->width() - others));
    }
}

void EventTableView::mousePressEvent(QMouseEvent *event) {
    RowTableView::mousePressEvent(event);
    m_wasPressed = indexAt(event->pos()).isValid();
    Q_EMIT firstPress();
}

void EventTableView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (std::exchange(m_wasPressed, false)) {
        Q_EMIT secondPress();
    } else {
        mousePressEvent(event);  // the first press fell on something else, such as a closed sheet
    }
}

void EventTableView::focusOutEvent(QFocusEvent *event) {
    m_wasPressed = false;
    RowTableView::focusOutEvent(event);
}

}  // namespace quorbel
