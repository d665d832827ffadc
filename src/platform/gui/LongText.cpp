#include "platform/gui/LongText.h"

#include "platform/gui/LetteredMenu.h"
#include "platform/gui/QtText.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMetaObject>
#include <QMimeData>
#include <QPainter>
#include <QTextCursor>
#include <QTextLayout>

#include <memory>

namespace quorbel {

namespace {

/// Many screens full, laid out in no time.
constexpr qsizetype kPortion = 65'536;

/// As wide as a hundred screens.
constexpr qsizetype kLongestField = 65'536;

QString titled(const QString &command, QKeySequence::StandardKey key) {
    return command + u'\t' + QKeySequence(key).toString(QKeySequence::NativeText);
}

}  // namespace

LongTextView::LongTextView(QWidget *parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    setUndoRedoEnabled(false);
}

void LongTextView::setWholeText(const QString &text) {
    m_painted = PaintedText(text);
    setPlainText(m_painted.paintLines(kPortion));
    mark();
}

void LongTextView::mark() {
    QList<QTextEdit::ExtraSelection> marks;
    for (const TextRange &range : m_marker ? m_marker(toPlainText()) : std::vector<TextRange>()) {
        QTextEdit::ExtraSelection mark{QTextCursor(document()), {}};
        mark.cursor.setPosition(static_cast<int>(range.begin));
        mark.cursor.setPosition(static_cast<int>(range.end), QTextCursor::KeepAnchor);
        mark.format.setBackground(QColor::fromRgb(kMarkColour));
        mark.format.setUnderlineStyle(QTextCharFormat::SingleUnderline);
        mark.format.setUnderlineColor(QColor::fromRgb(kMarkLineColour));
        marks.append(mark);
    }
    setExtraSelections(marks);
}

void LongTextView::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Copy) && !textCursor().hasSelection() &&
        !document()->isEmpty()) {
        event->ignore();
    } else {
        QPlainTextEdit::keyPressEvent(event);
    }
}

void LongTextView::paintEvent(QPaintEvent *event) {
    QPlainTextEdit::paintEvent(event);
    if (m_painted.isComplete()) {
        return;
    }
    const int lastSeen = cursorForPosition(viewport()->rect().bottomRight()).position();
    if (lastSeen > document()->characterCount() - kPortion / 2) {
        QMetaObject::invokeMethod(this, &LongTextView::paintMore, Qt::QueuedConnection);
    }
}

void LongTextView::paintMore() {
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.insertText(m_painted.paintLines(kPortion));
    mark();
}

QMimeData *LongTextView::createMimeDataFromSelection() const {
    const QTextCursor selection = textCursor();
    auto copied = std::make_unique<QMimeData>();
    copied->setText(m_painted.original(selection.selectionStart(), selection.selectionEnd()));
    return copied.release();
}

LongTextField::LongTextField(QWidget *parent) : QLineEdit(parent) {
    setReadOnly(true);
    setMaxLength(2 * kLongestField);
}

void LongTextField::setWholeText(const QString &text) {
    m_painted = PaintedText(text);
    showText(*this, m_painted.paintRow(kLongestField));
    m_marks = m_marker ? m_marker(this->text()) : std::vector<TextRange>();
}

void LongTextField::paintEvent(QPaintEvent *event) {
    QLineEdit::paintEvent(event);
    if (m_marks.empty() || hasSelectedText()) {
        return;
    }
    QTextLayout layout(text(), font(), this);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    // The text has been scrolled so far that the cursor is in sight.
    const QRect cursor = cursorRect();
    const QPointF origin(cursor.center().x() - line.cursorToX(cursorPosition()),
                         (height() - line.height()) / 2);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    const QRegion places = markedPlaces(layout, origin.toPoint(), m_marks);
    paintMarks(painter, places.intersected(contentsRect()), layout, origin.toPoint());
}

void LongTextField::copySelection(QClipboard::Mode mode) const {
    if (hasSelectedText()) {
        QGuiApplication::clipboard()->setText(m_painted.original(selectionStart(), selectionEnd()),
                                              mode);
    }
}

void LongTextField::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Copy)) {
        event->setAccepted(hasSelectedText() || text().isEmpty());
        copySelection(QClipboard::Clipboard);
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

void LongTextField::mouseReleaseEvent(QMouseEvent *event) {
    QLineEdit::mouseReleaseEvent(event);
    if (QGuiApplication::clipboard()->supportsSelection()) {
        copySelection(QClipboard::Selection);
    }
}

void LongTextField::contextMenuEvent(QContextMenuEvent *event) {
    auto *menu = new LetteredMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(titled(tr("&Copy"), QKeySequence::Copy), this,
                    [this] { copySelection(QClipboard::Clipboard); })
        ->setEnabled(hasSelectedText());
    menu->addAction(titled(tr("Select All"), QKeySequence::SelectAll), this,
                    &LongTextField::selectAll);
    menu->popup(event->globalPos());
}

}  // namespace quorbel
