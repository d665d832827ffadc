#include "platform/gui/ViewBar.h"

#include <QLinearGradient>
#include <QPainter>

namespace quorbel {

void drawBar(QWidget &box, const QColor &left, const QColor &right) {
    QLinearGradient gradient(0, 0, box.width(), 0);
    gradient.setColorAt(0, left);
    gradient.setColorAt(1, right);
    QPainter(&box).fillRect(box.rect(), gradient);
}

ViewBar::ViewBar(QWidget *parent) : QFrame(parent) {}

void ViewBar::paintEvent(QPaintEvent *event) {
    QFrame::paintEvent(event);
    drawBar(*this, QColor::fromRgbF(0.0F, 0.40F, 0.80F), QColor::fromRgbF(0.40F, 0.80F, 1.0F));
}

}  // namespace quorbel
