#include "home/CounterLabel.h"

#include "platform/gui/QtText.h"

#include <QPainter>
#include <QPalette>

namespace quorbel {

namespace {

QFont fittingFont(QFont font, const QString &text, int width) {
    constexpr double kStep = 0.5;
    constexpr double kSmallest = 5.0;
    while (font.pointSizeF() > kSmallest && QFontMetrics(font).horizontalAdvance(text) > width) {
        font.setPointSizeF(font.pointSizeF() - kStep);
    }
    return font;
}

}  // namespace

CounterLabel::CounterLabel(QWidget *parent) : QLabel(parent) {}

// The same for every number, so that a new one never moves anything on the page.
QSize CounterLabel::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(u'0') * 4, metrics.height()};
}

QSize CounterLabel::minimumSizeHint() const {
    return sizeHint();
}

void CounterLabel::paintEvent(QPaintEvent * /*event*/) {
    const QString shown = countText(text().toLongLong());
    QPainter painter(this);
    painter.setFont(fittingFont(font(), shown, width()));
    painter.setPen(palette().color(text() == u"0" ? QPalette::PlaceholderText : foregroundRole()));
    painter.drawText(rect(), static_cast<int>(alignment()) | Qt::TextSingleLine, shown);
}

}  // namespace quorbel
