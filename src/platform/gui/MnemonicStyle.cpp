#include "platform/gui/MnemonicStyle.h"

#include "platform/gui/Mnemonics.h"

#include <QAbstractButton>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>

namespace quorbel {

MnemonicStyle::MnemonicStyle(const QString &style, const Mnemonics &mnemonics)
    : QProxyStyle(style), m_mnemonics(mnemonics) {}

void MnemonicStyle::drawItemText(QPainter *painter, const QRect &place, int flags,
                                 const QPalette &palette, bool enabled, const QString &text,
                                 QPalette::ColorRole role) const {
    const auto *button = dynamic_cast<const QAbstractButton *>(painter->device());
    QProxyStyle::drawItemText(painter, place, flags, palette, enabled,
                              button == nullptr ? text : m_mnemonics.marked(*button, text), role);
}

int MnemonicStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                             QStyleHintReturn *data) const {
    if (hint == SH_UnderlineShortcut && qobject_cast<const QMenu *>(widget) == nullptr &&
        qobject_cast<const QMenuBar *>(widget) == nullptr) {
        return m_mnemonics.areUnderlined() ? 1 : 0;
    }
    return QProxyStyle::styleHint(hint, option, widget, data);
}

}  // namespace quorbel
