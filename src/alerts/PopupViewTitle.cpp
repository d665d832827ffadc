#include "alerts/PopupViewTitle.h"

#include "alerts/PopupView.h"
#include "alerts/PopupWindow.h"
#include "common/Severity.h"

#include <QPainter>

namespace quorbel {

namespace {

constexpr int kStripHeight = 22;
constexpr QPoint kTitlePlace{8, 0};
constexpr int kTitleHeight = 16;
constexpr int kTitleFontSize = 13;

QColor stripColour(std::int64_t level) {
    switch (level) {
        case kNormal:
            return QColor::fromRgbF(0.31F, 0.75F, 0.15F);
        case kModerate:
            return QColor::fromRgbF(1.0F, 0.8F, 0.0F);
        case kSevere:
            return QColor::fromRgbF(0.8F, 0.0F, 0.0F);
        default:
            return Qt::black;
    }
}

}  // namespace

void PopupViewTitle::paintEvent(QPaintEvent * /*event*/) {
    const auto *popup = window()->findChild<PopupView *>();
    if (popup == nullptr) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(QRect(0, 0, width(), kStripHeight), stripColour(popup->level()));
    QFont title = font();
    title.setPixelSize(kTitleFontSize);
    painter.setFont(title);
    painter.setPen(Qt::white);
    // As wide as the strip, though it begins further right: the title is meant to stand 8 pixels
    // right of the centre.
    painter.drawText(QRect(kTitlePlace, QSize(width(), kTitleHeight)), Qt::AlignCenter,
                     PopupWindow::tr("Quorbel Alert"));
}

}  // namespace quorbel
