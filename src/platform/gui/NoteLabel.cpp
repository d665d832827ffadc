#include "platform/gui/NoteLabel.h"

#include "platform/gui/LookProperty.h"

#include <QAccessible>

namespace quorbel {

namespace {

/// With places to wrap in words that are as long as only a stranger makes them: one such word would
/// make the whole page as wide as it is. Others stay to the letter, for whoever copies them.
QString withBreaks(const QString &text) {
    constexpr qsizetype kLongestPiece = 60;
    constexpr QChar kBreak(0x200B);
    QString result;
    qsizetype piece = 0;
    for (const QChar character : text) {
        if (character.isSpace()) {
            piece = 0;
        } else if (piece >= kLongestPiece && !character.isLowSurrogate()) {
            result += kBreak;
            piece = 1;
        } else {
            ++piece;
        }
        result += character;
    }
    return result;
}

}  // namespace

NoteLabel::NoteLabel(QWidget *parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setProperty("role", QStringLiteral("caption"));
}

void NoteLabel::say(const QString &text, bool isWarning) {
    setLookProperty(*this, "role",
                    isWarning ? QStringLiteral("warning") : QStringLiteral("caption"));
    const QString shown = withBreaks(text);
    if (shown == this->text()) {
        return;
    }
    setText(shown);
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

}  // namespace quorbel
