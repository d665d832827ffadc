#pragma once

#include <QLineEdit>
#include <QLocale>
#include <QString>

#include <string>
#include <string_view>

namespace quorbel {

/// UTF-8 text of the libraries as the widgets take it, to the letter.
inline QString toQString(std::string_view text) {
    // QString takes U+FEFF in front for a mark of the encoding and drops it.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    QString marks;
    for (; text.starts_with(kByteOrderMark); text.remove_prefix(kByteOrderMark.size())) {
        marks += QChar(QChar::ByteOrderMark);
    }
    const QString rest = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return marks.isEmpty() ? rest : marks + rest;
}

/// A count as it is shown anywhere: with its digits grouped as the user's locale does it.
inline QString countText(qint64 count) {
    return QLocale().toString(count);
}

/// The same of a counter that may be larger.
inline QString counterText(quint64 count) {
    return QLocale().toString(count);
}

/// The same where there is little room: from a million on in tenths of a million, "1.2M". Never
/// more than there are.
inline QString shortCountText(qint64 count) {
    constexpr qint64 kMillion = 1'000'000;
    if (count < kMillion) {
        return countText(count);
    }
    const qint64 tenths = count / (kMillion / 10);
    return QLocale().toString(static_cast<double>(tenths) / 10, 'f', 1) + QLatin1Char('M');
}

/// What tr() picks the form of a text by for a count that is more than an int may be: the forms of
/// all languages depend on the last digits.
inline int pluralNumber(qint64 count) {
    constexpr qint64 kMillion = 1'000'000;
    return static_cast<int>(count < kMillion ? count : kMillion + count % kMillion);
}

/// Shows a text in a field; one that is too long for it is seen from its beginning.
inline void showText(QLineEdit &field, const QString &text) {
    field.setText(text);
    field.setCursorPosition(0);
}

}  // namespace quorbel
