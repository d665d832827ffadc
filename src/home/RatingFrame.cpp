#include "home/RatingFrame.h"

#include <QPainter>

namespace quorbel {

namespace {

constexpr double kCornerRadius = 8;

}  // namespace

QColor toQColor(const RatingColour &colour) {
    return QColor::fromRgbF(colour.red, colour.green, colour.blue);
}

RatingFrame::RatingFrame(QWidget *parent) : QFrame(parent) {}

void RatingFrame::setBorderColor(const QColor &colour) {
    if (colour != m_borderColor) {
        m_borderColor = colour;
        update();
    }
}

void RatingFrame::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_borderColor, lineWidth()));
    painter.setBrush(Qt::white);
    const double inset = lineWidth() / 2.0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), kCornerRadius,
                            kCornerRadius);
}

}  // namespace quorbel
