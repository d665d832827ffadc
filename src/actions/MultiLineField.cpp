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
    m_shown = plainText();
    m_endsLinesWithCrLf = text.find("\r\n") != std::string_view::npos;
}

std::string MultiLineField::storedText() const {
    QString text = plainText();
    if (text == m_shown) {
        return m_stored;
    }
    if (m_endsLinesWithCrLf) {
        text.replace(u'\n', QStringLiteral("\r\n"));
    }
    return text.toStdString();
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

QString MultiLineField::plainText() const {
    // Not toPlainText(), which makes plain spaces of those that do not break.
    QString text = document()->toRawText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

}  // namespace quorbel
