#include "home/ChartLegend.h"

#include "platform/gui/FontSize.h"

#include <QPainter>
#include <QStringList>
#include <QStyle>

namespace quorbel {

namespace {

constexpr double kTextSize = 0.9;
constexpr int kSign = 15;
constexpr int kSignGap = 6;
constexpr int kGap = 16;
constexpr QColor kColumn(0x76, 0x81, 0x8f);
constexpr QColor kText(0x5b, 0x66, 0x75);
constexpr QColor kBase(0xc9, 0xd0, 0xd9);

void paintSign(QPainter &painter, const QRect &place, int sign) {
    const int unit = place.width() / 5;
    const int base = place.center().y() + 2 * unit;
    const auto bar = [&](int number, int height) {
        painter.fillRect(place.left() + number * 2 * unit, base - height, unit + 1, height,
                         kColumn);
    };
    switch (sign) {
        case 1:
            bar(0, 2 * unit);
            bar(1, 3 * unit);
            bar(2, 2 * unit);
            break;
        case 2:
            painter.setPen(kText);
            painter.drawPolyline(QPolygon({{place.left(), base},
                                           {place.left(), base - unit},
                                           {place.left() + unit, base - unit},
                                           {place.left() + unit, base - 3 * unit},
                                           {place.left() + 3 * unit, base - 3 * unit},
                                           {place.left() + 3 * unit, base - unit},
                                           {place.right(), base - unit},
                                           {place.right(), base}}));
            break;
        case 3:
            painter.fillRect(place.left(), base - 2 * unit, place.width(), 1, kBase);
            painter.fillRect(place.center().x(), base - 2 * unit, 1, 2 * unit, kColumn);
            break;
        default:
            break;
    }
}

}  // namespace

ChartLegend::ChartLegend(QWidget *parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    describe();
}

QList<ChartLegend::Entry> ChartLegend::entries() const {
    if (m_isEmpty) {
        return {{Sign::kNone, tr("No events yet")}};
    }
    if (m_isCompact) {
        return {{Sign::kColumns, tr("last 24 h")}, {Sign::kOutline, tr("day before")}};
    }
    return {{Sign::kColumns, tr("last 24 hours")},
            {Sign::kOutline, tr("the day before")},
            {Sign::kTick, tr("midnight")}};
}

void ChartLegend::describe() {
    QStringList texts;
    for (const Entry &entry : entries()) {
        texts += entry.text;
    }
    setAccessibleName(tr("Charts: %1").arg(texts.join(QStringLiteral(", "))));
    setToolTip(m_isEmpty ? QString()
                         : tr("Columns: the hours of the last day. Outline: the same hours the day "
                              "before.\nThe height is the square root of the count, on a scale of "
                              "each card's own."));
    updateGeometry();
    update();
}

void ChartLegend::setEmpty(bool isEmpty) {
    if (isEmpty != m_isEmpty) {
        m_isEmpty = isEmpty;
        describe();
    }
}

void ChartLegend::setCompact(bool isCompact) {
    if (isCompact != m_isCompact) {
        m_isCompact = isCompact;
        describe();
    }
}

QFont ChartLegend::textFont() const {
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * kTextSize);
    return small;
}

int ChartLegend::widthOf(const Entry &entry) const {
    const int sign = entry.sign == Sign::kNone ? 0 : sizedToFont(kSign) + kSignGap;
    return sign + QFontMetrics(textFont()).horizontalAdvance(entry.text);
}

QSize ChartLegend::sizeHint() const {
    int width = 0;
    for (const Entry &entry : entries()) {
        width += widthOf(entry) + (width == 0 ? 0 : kGap);
    }
    return {width, QFontMetrics(textFont()).height()};
}

QSize ChartLegend::minimumSizeHint() const {
    return {0, sizeHint().height()};
}

QRect ChartLegend::mirrored(const QRect &place) const {
    return QStyle::visualRect(layoutDirection(), rect(), place);
}

/// At the end, without the last ones where there is no room for all.
void ChartLegend::paintEvent(QPaintEvent * /*event*/) {
    QList<Entry> shown;
    int needed = 0;
    for (const Entry &entry : entries()) {
        const int width = widthOf(entry) + (shown.isEmpty() ? 0 : kGap);
        if (needed + width > this->width()) {
            break;
        }
        needed += width;
        shown.append(entry);
    }
    QPainter painter(this);
    painter.setFont(textFont());
    int x = width() - needed;
    for (const Entry &entry : shown) {
        const int sign = entry.sign == Sign::kNone ? 0 : sizedToFont(kSign);
        const QRect place(x, 0, widthOf(entry), height());
        paintSign(painter, mirrored(QRect(x, 0, sign, height())), static_cast<int>(entry.sign));
        painter.setPen(kText);
        painter.drawText(mirrored(place), Qt::AlignRight | Qt::AlignVCenter, entry.text);
        x += place.width() + kGap;
    }
}

}  // namespace quorbel
