#include "events/timeline/Timeline.h"

#include "events/timeline/TimeTexts.h"
#include "platform/gui/EventsText.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QHideEvent>
#include <QPainter>

#include <algorithm>
#include <numeric>
#include <utility>

namespace quorbel {

namespace {

constexpr int kTickDistance = 84;
constexpr int kWaitingWidth = 10;
constexpr std::size_t kSevereAt = 3;  // index of RatingCounts

std::size_t totalOf(const RatingCounts &counts) {
    return std::accumulate(counts.begin(), counts.end(), std::size_t{0});
}

QString number(std::size_t count) {
    return countText(static_cast<qint64>(count));
}

/// Of a group as it is said; what comes behind the last name stands for all others.
QString nameOf(const std::vector<std::string> &names, std::size_t place) {
    return place < names.size() ? paintedRow(toQString(names[place])) : Timeline::tr("others");
}

}  // namespace

Timeline::Timeline(QWidget *parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Timeline"));
    setAccessibleDescription(tr(
        "When the events happened. Arrow keys, plus, minus and Home look around; with Shift, "
        "arrow keys select a span. Return narrows the table to it, Backspace goes a step back. A "
        "menu chooses what the columns are stacked by"));
}

Timeline::~Timeline() {
    detach();
}

void Timeline::detach() {
    m_counts.reset();
    m_isCounted = false;
    m_axis.setNoRange();
    m_events = nullptr;
    if (m_hold != nullptr) {
        std::exchange(m_hold, nullptr)->removeObserver(*this);
    }
}

void Timeline::attach(ArrangedEvents &events, EventHold &hold) {
    m_events = &events;
    m_hold = &hold;
    m_hold->addObserver(*this);
    layOut();
}

QSize Timeline::sizeHint() const {
    const int height = TimelinePicture::heightFor(TimelinePicture::labelFont(font()),
                                                  m_grouping != EventGrouping::kRating);
    return {sizedToFont(kTickDistance), height};
}

void Timeline::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    if (!m_counts && m_events != nullptr) {
        startCounting();
    }
}

void Timeline::startCounting() {
    m_isCounted = false;
    m_counts = std::make_unique<TimelineCounts>(*m_events, m_grouping);
    connect(m_counts.get(), &TimelineCounts::changed, this, &Timeline::countsChanged);
}

void Timeline::setGrouping(EventGrouping grouping) {
    if (std::exchange(m_grouping, grouping) == grouping) {
        return;
    }
    updateGeometry();
    if (m_counts) {
        startCounting();
    }
}

void Timeline::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        m_counts.reset();
        m_isCounted = false;
        m_pointer.reset();
        unselect();
    }
}

void Timeline::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    layOut();
}

void Timeline::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
        viewChanged();
    }
}

void Timeline::holdChanged() {
    if ((m_hold->arrivals() > 0) != (m_waitingWidth > 0)) {
        layOut();
    } else if (isAtWaiting()) {
        pointerChanged();
    }
}

bool Timeline::isAtWaiting() const {
    return m_waitingWidth > 0 && m_pointer >= width() - m_waitingWidth;
}

void Timeline::layOut() {
    m_waitingWidth = m_hold != nullptr && m_hold->arrivals() > 0 ? sizedToFont(kWaitingWidth) : 0;
    m_axis.setWidth(width() - m_waitingWidth);
    viewChanged();
}

void Timeline::countsChanged() {
    m_isCounted = true;
    if (const TimeCounts &all = m_counts->all(); all.isEmpty()) {
        m_axis.setNoRange();
        unselect();
    } else {
        m_axis.setClockOffset(clockOffsetAt(all.last()));
        m_axis.setRange(all.first(), all.last());
    }
    viewChanged();
}

void Timeline::viewChanged() {
    m_isPictureCurrent = false;
    pointerChanged();
}

void Timeline::pointerChanged() {
    const QString text = (QStringList(readOut()) + groupTexts()).join(QStringLiteral(", "));
    setAccessibleName(text.isEmpty() ? tr("Timeline") : tr("Timeline: %1").arg(text));
    update();
}

void Timeline::paintEvent(QPaintEvent * /*event*/) {
    if (m_isCounted && !std::exchange(m_isPictureCurrent, true)) {
        fillColumns();
    }
    if (m_isCounted) {
        fillBands();
    }
    m_picture.hasFocus = hasFocus();
    QPainter painter(this);
    m_picture.paint(painter, size(), TimelinePicture::labelFont(font()));
}

void Timeline::fillColumns() {
    if (m_counts->allInGroups() == nullptr) {
        return;  // they are counted anew; what was painted stands until then
    }
    m_picture.columns.clear();
    m_picture.ticks.clear();
    if (!m_axis.hasRange()) {
        return;
    }
    m_picture.isByRating = m_grouping == EventGrouping::kRating;
    const TimeCounts &all = *m_counts->allInGroups();
    const TimeCounts *matching = m_counts->matchingInGroups();
    for (std::int64_t column = m_axis.firstColumn(); column < m_axis.endColumn(); ++column) {
        const TimeSpan span = m_axis.spanOf(column);
        m_picture.columns.push_back(
            {m_axis.leftOf(column), m_axis.columnWidth() - 1, all.sum(span.from, span.until),
             matching != nullptr ? std::optional(matching->sum(span.from, span.until))
                                 : std::nullopt,
             m_counts->all().sum(span.from, span.until)[kSevereAt]});
    }
    m_picture.ticks = ticksOf(m_axis, width() - m_waitingWidth, sizedToFont(kTickDistance));
}

void Timeline::fillBands() {
    using Band = TimelinePicture::Band;
    m_picture.asked = askedBand();
    m_picture.selected.reset();
    m_picture.outlined.reset();
    if (const auto span = selection()) {
        m_picture.selected = Band{m_axis.xOf(span->from), m_axis.xOf(span->until)};
    } else if (const auto column = columnOfInterest()) {
        const int left = m_axis.leftOf(*column);
        m_picture.outlined = Band{left, left + m_axis.columnWidth() - 1};
    }
    m_picture.waiting = m_waitingWidth == 0
                            ? std::nullopt
                            : std::optional(Band{width() - m_waitingWidth + 2, width()});
    m_picture.readOut = readOut();
    fillLegend();
}

void Timeline::fillLegend() {
    m_picture.legend.clear();
    if (m_grouping == EventGrouping::kRating || !m_axis.hasRange()) {
        return;
    }
    const QStringList counted = groupTexts();
    const std::vector<std::string> &names = m_counts->groups().names();
    for (std::size_t i = 0; i <= names.size(); ++i) {
        const auto place = static_cast<qsizetype>(i);
        m_picture.legend.append(counted.value(place, nameOf(names, i)));
    }
}

/// How many events of each group there are where pointer or keyboard are at; empty by rating.
QStringList Timeline::groupTexts() const {
    const std::optional<TimeSpan> span = spanOfInterest();
    if (!span || !m_isCounted || m_grouping == EventGrouping::kRating) {
        return {};
    }
    const TimeCounts *matching = m_counts->matchingInGroups();
    const TimeCounts *counted = matching != nullptr ? matching : m_counts->allInGroups();
    if (counted == nullptr) {
        return {};
    }
    const RatingCounts counts = counted->sum(span->from, span->until);
    const std::vector<std::string> &names = m_counts->groups().names();
    QStringList texts;
    for (std::size_t i = 0; i <= names.size(); ++i) {
        const std::size_t count = counts[(i + 1) % (names.size() + 1)];
        texts.append(nameOf(names, i) + QLatin1Char(' ') + number(count));
    }
    return texts;
}

QString Timeline::readOut() const {
    if (isAtWaiting()) {
        return m_hold->arrivals() == 1 ? tr("1 new event waits")
                                       : tr("%1 new events wait", nullptr,
                                            pluralNumber(static_cast<qint64>(m_hold->arrivals())))
                                             .arg(number(m_hold->arrivals()));
    }
    const std::optional<TimeSpan> span = spanOfInterest();
    return span && m_isCounted ? spanText(*span, m_axis) + QStringLiteral(": ") + countText(*span)
                               : QString();
}

std::optional<TimeSpan> Timeline::spanOfInterest() const {
    if (const auto selected = selection()) {
        return selected;
    }
    const auto column = columnOfInterest();
    return column ? std::optional(m_axis.spanOf(*column)) : std::nullopt;
}

QString Timeline::countText(const TimeSpan &span) const {
    const RatingCounts all = m_counts->all().sum(span.from, span.until);
    const TimeCounts *matching = m_counts->matching();
    const QString text =
        matching == nullptr
            ? eventsText(totalOf(all))
            : eventsText(number(totalOf(matching->sum(span.from, span.until))), totalOf(all));
    return all[kSevereAt] == 0 ? text : tr("%1, %2 severe").arg(text, number(all[kSevereAt]));
}

std::int64_t Timeline::cursorColumn() const {
    const std::int64_t column = m_cursor ? m_axis.columnOf(*m_cursor) : m_axis.endColumn() - 1;
    return std::clamp(column, m_axis.oldestColumn(), m_axis.newestColumn());
}

std::int64_t Timeline::columnNear(int x) const {
    return std::clamp(m_axis.columnAt(std::clamp(x, 0, width() - m_waitingWidth - 1)),
                      m_axis.oldestColumn(), m_axis.newestColumn());
}

std::optional<std::int64_t> Timeline::columnOfInterest() const {
    if (!m_axis.hasRange() || m_drag == Drag::kPan) {
        return std::nullopt;
    }
    if (m_pointer) {
        const std::int64_t column = m_axis.columnAt(*m_pointer);
        return column >= m_axis.oldestColumn() && column <= m_axis.newestColumn()
                   ? std::optional(column)
                   : std::nullopt;
    }
    return hasFocus() ? std::optional(cursorColumn()) : std::nullopt;
}

std::optional<TimeSpan> Timeline::selection() const {
    if (!m_anchor || !m_axis.hasRange()) {
        return std::nullopt;
    }
    const auto [first, last] = std::minmax({m_axis.columnOf(*m_anchor), cursorColumn()});
    return TimeSpan{m_axis.spanOf(first).from, m_axis.spanOf(last).until};
}

void Timeline::setAsked(std::optional<std::int64_t> from, std::optional<std::int64_t> until) {
    m_asked = {from, until};
    update();
}

std::optional<TimelinePicture::Band> Timeline::askedBand() const {
    // Without a choice, a kept filter's.
    const EventQuery &filter = m_events->filter();
    const AskedSpan span = m_asked == AskedSpan() ? AskedSpan{filter.from, filter.until} : m_asked;
    if (!m_axis.hasRange() || span == AskedSpan()) {
        return std::nullopt;
    }
    constexpr int kOutside = 20;
    const int end = width() + kOutside;
    const auto place = [&](const std::optional<std::int64_t> &moment, int open) {
        return moment ? std::clamp(m_axis.xOf(*moment), -kOutside, end) : open;
    };
    return TimelinePicture::Band{place(span.from, -kOutside), place(span.until, end)};
}

}  // namespace quorbel
