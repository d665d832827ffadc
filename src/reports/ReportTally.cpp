#include "reports/ReportTally.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/QtText.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kMostForNames = 60;  // percent of the width
constexpr int kGap = 12;           // the lengths are pixels at the standard font
constexpr int kLongestBar = 160;
constexpr int kShortestBar = 24;
constexpr int kBarHeight = 7;
constexpr QColor kBar(0x76, 0x81, 0x8f);
constexpr QColor kPercent(0x5b, 0x66, 0x75);

int widestPercent(const QFontMetrics &metrics) {
    int widest = 0;
    for (const std::size_t events : {std::size_t{1}, std::size_t{999}, std::size_t{1000}}) {
        widest = std::max(widest, metrics.horizontalAdvance(percentText({events, 1000, 1000})));
    }
    return widest;
}

}  // namespace

ReportTally::ReportTally(const QFontMetrics &metrics, int width, int names, const GroupShare &all)
    : m_nameWidth(std::min(names, width * kMostForNames / 100)) {
    const int gap = sizedToFont(kGap);
    m_count = {m_nameWidth + gap,
               metrics.horizontalAdvance(countText(static_cast<qint64>(all.largest)))};
    int begin = m_count.begin + m_count.width + gap;
    const int percent = widestPercent(metrics);
    const int bar = std::min(width - begin - gap - percent - gap, sizedToFont(kLongestBar));
    // Where there is little room, the number says more than the bar.
    if (bar >= sizedToFont(kShortestBar)) {
        m_bar = {begin, bar};
        begin += bar + gap;
    }
    if (begin + percent <= width) {
        m_percent = {begin, percent};
    }
}

void ReportTally::paint(QPainter &painter, const QStyleOptionViewItem &option,
                        const GroupShare &share) const {
    paintText(painter, option, m_count, countText(static_cast<qint64>(share.events)),
              option.palette.color(QPalette::Text));
    paintText(painter, option, m_percent, percentText(share), kPercent);
    if (m_bar.width == 0 || share.largest == 0) {
        return;
    }
    const auto full = static_cast<std::size_t>(m_bar.width);
    Span filled = m_bar;
    filled.width = static_cast<int>(std::max<std::size_t>(full * share.events / share.largest, 1));
    QRect bar = rect(option, filled);
    const int height = sizedToFont(kBarHeight);
    bar.setTop(option.rect.center().y() - height / 2);
    bar.setHeight(height);
    painter.fillRect(bar, kBar);
}

void ReportTally::paintText(QPainter &painter, const QStyleOptionViewItem &option, const Span &span,
                            const QString &text, const QColor &colour) {
    if (span.width == 0) {
        return;
    }
    painter.setFont(option.font);
    painter.setPen(colour);
    // Numbers are read from left to right in any layout, and end below one another.
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.drawText(rect(option, span), Qt::AlignRight | Qt::AlignVCenter, text);
}

QRect ReportTally::rect(const QStyleOptionViewItem &option, const Span &span) {
    const QRect place(option.rect.left() + span.begin, option.rect.top(), span.width,
                      option.rect.height());
    return QStyle::visualRect(option.direction, option.rect, place);
}

}  // namespace quorbel
