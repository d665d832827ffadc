#include "actions/MultiLineField.h"

#include "platform/gui/QtText.h"

#include <QKeyEvent>
#include <QStyle>
#include <QTextDocument>

namespace quorbel {

MultiLineField::MultiLineField(QWidget *parent) : QPlainTextEdit(parent) {
    setTabChangesFocus(true);
}

void MultiLineField::setStoredText(std::string_view text) {
    setPlainText(toQString(text));
    m_stored = text;
    m_shown = lines();
    m_lines = StoredLines(text, m_shown);
}

std::string MultiLineField::storedText() const {
    const QStringList edited = lines();
    return edited == m_shown ? m_stored : m_lines.restored(edited);
}

void MultiLineField::scrollToBeginning() {
    moveCursor(QTextCursor::Start);
    ensureCursorVisible();
}

void MultiLineField::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::InsertLineSeparator) && !isReadOnly()) {
        // The base class would put a separator of its own here, which ends no line for others.
        textCursor().insertBlock();
        ensureCursorVisible();
    } else {
        QPlainTextEdit::keyPressEvent(event);
    }
}

void MultiLineField::changeEvent(QEvent *event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::ReadOnlyChange) {
        // The style sheet's rule for it looks at a property, and properties are not watched.
        style()->unpolish(this);
        style()->polish(this);
    }
}

QStringList MultiLineField::lines() const {
    // Not toPlainText(), which makes plain spaces of those that do not break.
    return document()->toRawText().split(QChar::ParagraphSeparator);
}

}  // namespace quorbel
