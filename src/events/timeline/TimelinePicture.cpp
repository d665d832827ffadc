#include "events/timeline/TimelinePicture.h"

#include "platform/gui/FontSize.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace quorbel {

namespace {

constexpr int kHeight = 36;  // of the columns
constexpr int kMarks = 9;    // below them
constexpr int kGap = 8;
constexpr int kSwatch = 9;
constexpr int kWidestName = 180;
constexpr int kLeastSevere = 3;
constexpr double kLabelSize = 0.85;

constexpr QColor kSevere(0xd9, 0x3a, 0x3f);
constexpr QColor kModerate(0xf0, 0xa3, 0x0a);
constexpr QColor kNormal(0x2f, 0x9e, 0x52);
constexpr QColor kPaleModerate(0xf7, 0xe0, 0xb0);
constexpr QColor kPaleNormal(0xd3, 0xe7, 0xd9);
/// By group.
constexpr std::array<QColor, kRatingCount> kGroups{
    QColor(0x8a, 0x95, 0xa3), QColor(0x1f, 0x6f, 0xbf), QColor(0x8e, 0x55, 0xb8),
    QColor(0x12, 0x8f, 0x8b)};
constexpr std::array<QColor, kRatingCount> kPaleGroups{
    QColor(0xe1, 0xe5, 0xea), QColor(0xc6, 0xdc, 0xf2), QColor(0xe0, 0xd1, 0xec),
    QColor(0xc1, 0xe3, 0xe1)};
constexpr QColor kEdge(0x44, 0x50, 0x5f);
constexpr QColor kPaleEdge(0x8a, 0x95, 0xa3);
constexpr QColor kBase(0xc9, 0xd0, 0xd9);
constexpr QColor kLabel(0x5b, 0x66, 0x75);
constexpr QColor kInk(0x1f, 0x27, 0x33);
constexpr QColor kBand(0xea, 0xf3, 0xfc);
constexpr QColor kAccent(0x00, 0x66, 0xcc);

/// Indices of RatingCounts; what has no rating counts as normal.
constexpr std::size_t kModerateAt = 2;
constexpr std::size_t kSevereAt = 3;

std::size_t totalOf(const RatingCounts &counts) {
    return std::accumulate(counts.begin(), counts.end(), std::size_t{0});
}

/// Stacks the parts of one column, from its base upwards.
class Stack {
public:
    Stack(QPainter &painter, const TimelinePicture::Column &column, const QRect &area,
          std::size_t most)
        : m_painter(painter), m_column(column), m_area(area), m_most(most) {}

    /// Adds so many events, at least so many pixels.
    void add(std::size_t count, const QColor &colour, int least = 0) {
        m_count += count;
        const auto height = static_cast<int>(std::lround(
            static_cast<double>(m_count) * m_area.height() / static_cast<double>(m_most)));
        const int top =
            std::min(std::max(height, m_height + (count > 0 ? least : 0)), m_area.height());
        fill(m_height, top, colour);
        m_height = std::max(m_height, top);
    }
    /// Ends what was added so far with an edge in its topmost pixel.
    void addEdge(const QColor &colour) {
        m_height = std::max(m_height, 1);
        fill(m_height - 1, m_height, colour);
    }

private:
    void fill(int from, int to, const QColor &colour) {
        m_painter.fillRect(m_column.x, m_area.bottom() + 1 - to, m_column.width, to - from, colour);
    }

    QPainter &m_painter;
    const TimelinePicture::Column &m_column;
    QRect m_area;
    std::size_t m_most;
    std::size_t m_count = 0;
    int m_height = 0;
};

void stackRatings(Stack &stack, const TimelinePicture::Column &column) {
    const std::size_t all = totalOf(column.all);
    const RatingCounts full = column.matching.value_or(RatingCounts{});
    const std::size_t severe = std::max(column.all[kSevereAt], full[kSevereAt]);
    const std::size_t normal = totalOf(full) - full[kModerateAt] - full[kSevereAt];
    stack.add(severe, kSevere, kLeastSevere);
    stack.add(full[kModerateAt], kModerate, 1);
    stack.add(normal, kNormal, 1);
    if (totalOf(full) > 0) {
        stack.addEdge(kEdge);
    }
    const std::size_t moderateRest =
        column.all[kModerateAt] - std::min(column.all[kModerateAt], full[kModerateAt]);
    const std::size_t shown = severe + full[kModerateAt] + normal + moderateRest;
    stack.add(moderateRest, kPaleModerate);
    stack.add(all - std::min(all, shown), kPaleNormal);
    if (totalOf(full) < all && severe < all) {
        stack.addEdge(kPaleEdge);
    }
}

void stackGroups(Stack &stack, const TimelinePicture::Column &column) {
    constexpr std::array<std::size_t, kRatingCount> kOrder{1, 2, 3, 0};
    const RatingCounts full = column.matching.value_or(RatingCounts{});
    for (const std::size_t group : kOrder) {
        stack.add(full[group], kGroups[group], 1);
    }
    if (totalOf(full) > 0) {
        stack.addEdge(kEdge);
    }
    for (const std::size_t group : kOrder) {
        stack.add(column.all[group] - std::min(column.all[group], full[group]), kPaleGroups[group]);
    }
    if (totalOf(full) < totalOf(column.all)) {
        stack.addEdge(kPaleEdge);
    }
}

void paintSevereMark(QPainter &painter, const TimelinePicture::Column &column, const QRect &area) {
    const double middle = column.x + column.width / 2.0;
    const double top = area.bottom() + 3;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(kSevere);
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF{{middle, top}, {middle - 3.5, top + 5}, {middle + 3.5, top + 5}});
    painter.setRenderHint(QPainter::Antialiasing, false);
}

}  // namespace

QRect TimelinePicture::columnsArea(const QSize &size) {
    return {0, 0, size.width(), sizedToFont(kHeight)};
}

QFont TimelinePicture::labelFont(const QFont &base) {
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() * kLabelSize);
    return font;
}

int TimelinePicture::heightFor(const QFont &labels, bool hasLegend) {
    return sizedToFont(kHeight) + kMarks + QFontMetrics(labels).height() * (hasLegend ? 2 : 1);
}

void TimelinePicture::paint(QPainter &painter, const QSize &size, const QFont &font) const {
    const QRect area = columnsArea(size);
    painter.setFont(font);
    if (asked) {
        paintBand(painter, area, *asked, false);
    }
    if (selected) {
        painter.fillRect(
            QRect(selected->left, area.top(), selected->right - selected->left, area.height()),
            kBand);
    }
    paintColumns(painter, area);
    painter.fillRect(0, area.bottom() + 1, size.width(), 1, hasFocus ? kAccent : kBase);
    if (asked) {
        paintBand(painter, area, *asked, true);
    }
    if (selected) {
        painter.fillRect(selected->left, area.top(), 1, area.height(), kAccent);
        painter.fillRect(selected->right - 1, area.top(), 1, area.height(), kAccent);
    }
    if (waiting) {
        const QRect bar(waiting->left, area.top(), waiting->right - waiting->left, area.height());
        painter.fillRect(bar, Qt::white);
        painter.fillRect(bar, QBrush(kEdge, Qt::BDiagPattern));
        painter.setPen(kEdge);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(bar.adjusted(0, 0, -1, -1));
    }
    if (outlined) {
        painter.setPen(kInk);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(outlined->left - 1, area.top(), outlined->right - outlined->left + 1,
                         area.height());
    }
    paintLabels(painter, area, size);
}

void TimelinePicture::paintBand(QPainter &painter, const QRect &area, const Band &band,
                                bool hasHandles) const {
    if (!hasHandles) {
        painter.fillRect(QRect(band.left, area.top(), band.right - band.left, area.height()),
                         kBand);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (const int x : {band.left - 1, band.right - 1}) {
        painter.fillRect(x, area.top(), 2, area.height() + 1, kAccent);
        painter.setPen(kAccent);
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(QRectF(x - 1.5, area.center().y() - 5.5, 5, 11), 2.5, 2.5);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void TimelinePicture::paintColumns(QPainter &painter, const QRect &area) const {
    std::size_t most = 1;
    for (const Column &column : columns) {
        most = std::max(most, totalOf(column.all));
    }
    for (const Column &column : columns) {
        if (totalOf(column.all) > 0) {
            Stack stack(painter, column, area, most);
            if (isByRating) {
                stackRatings(stack, column);
            } else {
                stackGroups(stack, column);
            }
        }
        if (column.severe > 0) {
            paintSevereMark(painter, column, area);
        }
    }
}

void TimelinePicture::paintLabels(QPainter &painter, const QRect &area, const QSize &size) const {
    const QFontMetrics metrics = painter.fontMetrics();
    const int top = area.bottom() + kMarks;
    const int readOutWidth = metrics.horizontalAdvance(readOut);
    const int end = size.width() - (readOut.isEmpty() ? 0 : readOutWidth + kGap);
    int free = 0;
    for (const TimeTick &tick : ticks) {
        const int width = metrics.horizontalAdvance(tick.text);
        const int left = std::clamp(tick.x - width / 2, 0, std::max(size.width() - width, 0));
        painter.fillRect(tick.x, area.bottom() + 1, 1, 4, kBase);
        if (left >= free && left + width <= end) {
            painter.setPen(kLabel);
            painter.drawText(left, top, width, metrics.height(), Qt::AlignCenter, tick.text);
            free = left + width + kGap;
        }
    }
    painter.setPen(kInk);
    painter.drawText(QRect(std::max(size.width() - readOutWidth, 0), top,
                           std::min(readOutWidth, size.width()), metrics.height()),
                     Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, readOut);
    paintLegend(painter, top + metrics.height(), size.width());
}

void TimelinePicture::paintLegend(QPainter &painter, int top, int width) const {
    const QFontMetrics metrics = painter.fontMetrics();
    const int swatch = sizedToFont(kSwatch);
    int left = 0;
    for (qsizetype i = 0; i < legend.size(); ++i) {
        const auto group = static_cast<std::size_t>((i + 1) % legend.size());
        const QString text =
            metrics.elidedText(legend[i], Qt::ElideMiddle,
                               std::min(sizedToFont(kWidestName), width / 4 - swatch - 2 * kGap));
        painter.fillRect(left, top + (metrics.height() - swatch) / 2, swatch, swatch,
                         kGroups[group]);
        left += swatch + kGap / 2;
        const int textWidth = metrics.horizontalAdvance(text);
        painter.drawText(left, top, textWidth, metrics.height(),
                         Qt::AlignVCenter | Qt::TextSingleLine, text);
        left += textWidth + 2 * kGap;
    }
}

}  // namespace quorbel
