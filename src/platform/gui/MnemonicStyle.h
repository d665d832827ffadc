#pragma once

#include <QProxyStyle>

namespace quorbel {

class Mnemonics;

/// Underlines the letters of buttons while they are to be, without their texts having a mark. It
/// stands below the style sheet, which leaves the painting of texts to it. Menus underline theirs
/// always.
class MnemonicStyle : public QProxyStyle {
    Q_OBJECT

public:
    /// `mnemonics` outlives it; `style` says how all else looks.
    MnemonicStyle(const QString &style, const Mnemonics &mnemonics);

    void drawItemText(QPainter *painter, const QRect &place, int flags, const QPalette &palette,
                      bool enabled, const QString &text,
                      QPalette::ColorRole role = QPalette::NoRole) const override;
    int styleHint(StyleHint hint, const QStyleOption *option = nullptr,
                  const QWidget *widget = nullptr, QStyleHintReturn *data = nullptr) const override;

private:
    const Mnemonics &m_mnemonics;
};

}  // namespace quorbel
