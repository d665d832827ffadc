#include "platform/gui/FontSize.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <QScreen>

#include <algorithm>

namespace quorbel {

namespace {

constexpr double kPointsPerInch = 72;
constexpr double kStandardHeight = 10 * 96 / kPointsPerInch;

/// In pixels.
double fontHeight() {
    const QFont font = QApplication::font();
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (font.pointSizeF() <= 0 || screen == nullptr) {
        return QFontInfo(font).pixelSize();
    }
    return font.pointSizeF() * screen->logicalDotsPerInchY() / kPointsPerInch;
}

}  // namespace

int sizedToFont(int pixels) {
    return qRound(pixels * std::max(1.0, fontHeight() / kStandardHeight));
}

}  // namespace quorbel
