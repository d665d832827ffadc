#include "events/find/ScrollMarks.h"

#include "common/Severity.h"

#include <QEvent>
#include <QPainter>
#include <QRegion>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QTableView>

#include <algorithm>
#include <chrono>

namespace quorbel {

namespace {

constexpr int kThickness = 2;
constexpr int kBesideHandle = 2;  // what marks keep of the width there
/// Looking at a million events takes milliseconds.
constexpr std::chrono::milliseconds kDelay{100};
constexpr EventRating kSevereRating = kSevere + 1;
const QColor kColour(0xd9, 0x3a, 0x3f);

QRect handleOf(const QScrollBar &bar) {
    QStyleOptionSlider option;
    option.initFrom(&bar);
    option.orientation = bar.orientation();
    option.minimum = bar.minimum();
    option.maximum = bar.maximum();
    option.singleStep = bar.singleStep();
    option.pageStep = bar.pageStep();
    option.sliderPosition = option.sliderValue = bar.sliderPosition();
    return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider,
                                       &bar);
}

}  // namespace

ScrollMarks::ScrollMarks(ArrangedEvents &events, QTableView &table)
    : QWidget(table.verticalScrollBar()), m_events(events), m_bar(*table.verticalScrollBar()) {
    setObjectName(QStringLiteral("scrollMarks"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ScrollMarks::look);
    const QAbstractItemModel *model = table.model();
    connect(model, &QAbstractItemModel::rowsInserted, this, &ScrollMarks::lookLater);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &ScrollMarks::lookLater);
    connect(model, &QAbstractItemModel::modelReset, this, &ScrollMarks::look);
    m_bar.installEventFilter(this);
}

void ScrollMarks::lookLater() {
    if (m_events.isFiltered() && !m_timer.isActive()) {
        m_timer.start(kDelay);
    }
}

void ScrollMarks::look() {
    setGeometry(m_bar.rect());
    m_isMarked.assign(static_cast<std::size_t>(std::max(height(), 1)), false);
    const std::size_t rows = m_events.isFiltered() ? m_events.size() : 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (m_events.ratingAt(row) == kSevereRating) {
            m_isMarked[row * m_isMarked.size() / rows] = true;
        }
    }
    setVisible(std::ranges::find(m_isMarked, true) != m_isMarked.end());
    update();
}

void ScrollMarks::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    // The handle has to be found among thousands of marks; they go on at its edge.
    painter.setClipRegion(QRegion(rect()) -
                          handleOf(m_bar).intersected(rect().adjusted(0, 0, -kBesideHandle, 0)));
    for (std::size_t y = 0; y < m_isMarked.size(); ++y) {
        if (m_isMarked[y]) {
            const int top = std::min(static_cast<int>(y), height() - kThickness);
            painter.fillRect(width() / 4, top, width() - width() / 4, kThickness, kColour);
        }
    }
}

bool ScrollMarks::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize && m_events.isFiltered()) {
        look();
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace quorbel
