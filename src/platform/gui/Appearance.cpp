#include "platform/gui/Appearance.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/MnemonicStyle.h"
#include "platform/gui/Mnemonics.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QPalette>
#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

constexpr double kSmallestPointSize = 10;

QPalette lightPalette() {
    const QColor ink(0x1f, 0x27, 0x33);
    const QColor faded(0x9a, 0xa3, 0xaf);
    const QColor accent(0x00, 0x66, 0xcc);
    QPalette palette(QColor(0xf3, 0xf5, 0xf8), Qt::white);
    palette.setColor(QPalette::WindowText, ink);
    palette.setColor(QPalette::Text, ink);
    palette.setColor(QPalette::ButtonText, ink);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf8, 0xf9, 0xfb));
    palette.setColor(QPalette::PlaceholderText, QColor(0x68, 0x73, 0x81));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::LinkVisited, accent);
    palette.setColor(QPalette::ToolTipBase, ink);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faded);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, faded);
    return palette;
}

QFont baseFont(QFont font) {
    QStringList families{QStringLiteral("Inter"), QStringLiteral("Cantarell"),
                         QStringLiteral("Noto Sans"), QStringLiteral("DejaVu Sans")};
    font.setFamilies(families + font.families());
    font.setPointSizeF(std::max(font.pointSizeF(), kSmallestPointSize));
    return font;
}

/// The style sheet names the sizes that depend on the base font: "@title" and so on.
QString styleSheet(double pointSize) {
    struct Size {
        QLatin1StringView name;
        double factor;
    };
    static constexpr std::array kSizes{
        Size{QLatin1StringView("@figure"), 1.9}, Size{QLatin1StringView("@title"), 1.7},
        Size{QLatin1StringView("@section"), 1.15}, Size{QLatin1StringView("@small"), 0.9}};
    QFile file(QStringLiteral(":/quorbel.qss"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QString sheet = QString::fromUtf8(file.readAll());
    for (const Size &size : kSizes) {
        sheet.replace(size.name, QStringLiteral("%1pt").arg(pointSize * size.factor));
    }
    constexpr int kIndicator = 16;
    constexpr int kBorder = 1;
    sheet.replace(QStringLiteral("@round"),
                  QStringLiteral("%1px").arg(sizedToFont(kIndicator) / 2 + kBorder));
    static const QRegularExpression pixels(QStringLiteral("@(\\d+)px"));
    for (auto match = pixels.match(sheet); match.hasMatch(); match = pixels.match(sheet)) {
        const int size = sizedToFont(match.capturedView(1).toInt());
        sheet.replace(match.capturedStart(), match.capturedLength(),
                      QStringLiteral("%1px").arg(size));
    }
    return sheet;
}

}  // namespace

void applyAppearance(QApplication &application) {
    const auto *mnemonics = new Mnemonics(application);
    QApplication::setStyle(new MnemonicStyle(QStringLiteral("Fusion"), *mnemonics));
    QApplication::setPalette(lightPalette());
    const QFont font = baseFont(QApplication::font());
    QApplication::setFont(font);
    application.setStyleSheet(styleSheet(font.pointSizeF()));
    QApplication::setWindowIcon(applicationIcon());
}

}  // namespace quorbel
