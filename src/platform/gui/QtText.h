#pragma once

#include <QLineEdit>
#include <QString>

#include <string>
#include <string_view>

namespace quorbel {

/// UTF-8 text of the libraries as the widgets take it.
inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Shows a text in a field; one that is too long for it is seen from its beginning.
inline void showText(QLineEdit &field, const QString &text) {
    field.setText(text);
    field.setCursorPosition(0);
}

}  // namespace quorbel
