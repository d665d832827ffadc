#include "home/HourChart.h"

#include "platform/gui/FontSize.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quorbel {

namespace {

constexpr int kHeight = 25;  // of the columns, at least
constexpr int kCompactHeight = 12;
constexpr int kOpen = 2;      // above them, for an outline without an end
constexpr int kLabelGap = 4;  // above them, where there is room
constexpr int kTick = 5;
constexpr int kLeast = 2;  // of a column that stands for anything
constexpr int kNarrowest = 48;
constexpr double kLabelSize = 0.8;
constexpr int kLabelledHours = 6;

constexpr QColor kColumn(0x76, 0x81, 0x8f);
constexpr QColor kSevereColumn(0xd9, 0x3a, 0x3f);
constexpr QColor kOutline(0x5b, 0x66, 0x75);
constexpr QColor kBase(0xc9, 0xd0, 0xd9);
constexpr QColor kBand(0xd5, 0xe7, 0xf9);

constexpr auto kColumns = static_cast<int>(HourCounts::kColumns);

}  // namespace

/// One painting, in the pixels of the screen, so that every line is sharp.
struct HourChart::Picture {
    QPainter &painter;
    const HourCounts &counts;
    HourScale scale;
    int width;
    int open;    // the upper end of an outline without an end
    int height;  // of the columns
    int line;    // how thick one is
    int least;

    [[nodiscard]] int base() const { return open + height; }
    [[nodiscard]] int left(int column) const { return column * width / kColumns; }
    [[nodiscard]] int heightOf(std::uint64_t count) const {
        return scale.height(count, height, least);
    }
    void fill(int x, int y, int w, int h, const QColor &colour) const {
        painter.fillRect(x, y, w, h, colour);
    }

    /// The upper end of the day before in a column.
    [[nodiscard]] int outlineAt(int column) const {
        if (column < 0 || column >= kColumns) {
            return base();
        }
        const std::uint64_t count = counts.dayBefore.at(static_cast<std::size_t>(column));
        return scale.isBeyond(count) ? 0 : base() - heightOf(count);
    }
    void drawOutline() const {
        for (int column = 0; column <= kColumns; ++column) {
            const int before = outlineAt(column - 1);
            const int here = outlineAt(column);
            const int x = std::min(left(column), width - line);
            if (before != here) {
                const int upper = std::min(before, here);
                fill(x, upper, line, std::max(before, here) - upper + line, kOutline);
            }
            if (here > 0 && here < base()) {
                fill(x, here, left(column + 1) - x, line, kOutline);
            }
        }
    }
    void drawColumns(const QColor &colour) const {
        const int step = std::max(width / kColumns, 1);
        const int thickness = std::max((step * 5 + 3) / 7, 1);
        for (int column = 0; column < kColumns; ++column) {
            const auto index = static_cast<std::size_t>(column);
            const int tall = heightOf(counts.lastDay.at(index));
            const int x = left(column) + (step - thickness + 1) / 2;
            fill(x, base() - tall, thickness, tall, colour);
            const std::uint64_t before = counts.dayBefore.at(index);
            if (before > 0 && outlineAt(column) > base() - tall) {
                fill(x, outlineAt(column), thickness, line, Qt::white);
            }
        }
    }
    void drawBase(int tick) const {
        fill(0, base(), width, line, kBase);
        for (int column = 0; column < kColumns; ++column) {
            if (counts.clockHour(static_cast<std::size_t>(column)) == 0) {
                fill(left(column), base(), line, tick, kColumn);
            }
        }
    }
};

HourChart::HourChart(QWidget *parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void HourChart::setCounts(const HourCounts &counts) {
    if (counts != m_counts) {
        m_counts = counts;
        update();
    }
}

void HourChart::setSevere(bool isSevere) {
    if (isSevere != m_isSevere) {
        m_isSevere = isSevere;
        update();
    }
}

void HourChart::setMarked(std::optional<std::size_t> column) {
    if (column != m_marked) {
        m_marked = column;
        update();
    }
}

void HourChart::setLabelled(bool isLabelled) {
    if (isLabelled != m_isLabelled) {
        m_isLabelled = isLabelled;
        update();
    }
}

void HourChart::setCompact(bool isCompact) {
    m_isCompact = isCompact;
    updateGeometry();
}

std::optional<std::size_t> HourChart::columnAt(int x) const {
    if (x < 0 || x >= width()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(x * kColumns / width());
}

QRect HourChart::columnRect(std::size_t column) const {
    const int left = static_cast<int>(column) * width() / kColumns;
    const int right = (static_cast<int>(column) + 1) * width() / kColumns;
    return {left, 0, right - left, height()};
}

QSize HourChart::sizeHint() const {
    return minimumSizeHint();
}

QSize HourChart::minimumSizeHint() const {
    const int columns = m_isCompact ? kCompactHeight : kHeight;
    return {sizedToFont(kNarrowest), kOpen + sizedToFont(columns) + kTick};
}

QFont HourChart::labelFont() const {
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * kLabelSize);
    return small;
}

int HourChart::below() const {
    return m_isLabelled ? QFontMetrics(labelFont()).height() + 1 : kTick;
}

void HourChart::paintEvent(QPaintEvent * /*event*/) {
    const double pixels = devicePixelRatioF();
    const auto device = [pixels](int size) { return static_cast<int>(std::lround(size * pixels)); };
    QPainter painter(this);
    const int labels = below();
    const int above = m_isLabelled ? kOpen + kLabelGap : kOpen;
    const int columns = height() - above - labels;
    if (m_isLabelled) {
        painter.setFont(labelFont());
        painter.setPen(kOutline);
        for (std::size_t column = 0; column < HourCounts::kColumns; ++column) {
            const int hour = m_counts.clockHour(column);
            const QRect place(columnRect(column).left() + 3, height() - labels + 1, 40, labels);
            if (hour % kLabelledHours == 0 && place.left() + 16 < width()) {
                painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, QString::number(hour));
            }
        }
    }
    painter.scale(1 / pixels, 1 / pixels);
    const Picture picture{painter,       m_counts,        HourScale(m_counts), device(width()),
                          device(above), device(columns), device(1),           device(kLeast)};
    if (m_marked) {
        const auto column = static_cast<int>(*m_marked);
        picture.fill(picture.left(column), 0, picture.left(column + 1) - picture.left(column),
                     picture.base(), kBand);
    }
    picture.drawOutline();
    picture.drawColumns(m_isSevere ? kSevereColumn : kColumn);
    picture.drawBase(device(m_isLabelled ? labels : kTick));
}

}  // namespace quorbel
