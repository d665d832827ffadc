#pragma once

#include "platform/gui/PaintedText.h"

#include <QClipboard>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace quorbel {

/// Shows a text of any length and content in its own lines, read-only. It is laid out as far as one
/// scrolls (see PaintedText); what is copied is the text itself, and all of it when all that is
/// shown is selected.
class LongTextView : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit LongTextView(QWidget *parent = nullptr);

    void setWholeText(const QString &text);
    [[nodiscard]] const QString &wholeText() const { return m_painted.text(); }

protected:
    /// Leaves copying to the sheet while nothing of its text is selected, as does LongTextField.
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    [[nodiscard]] QMimeData *createMimeDataFromSelection() const override;

private:
    void paintMore();

    PaintedText m_painted;
};

/// The same in one line, of which one that is very long shows only the beginning.
class LongTextField : public QLineEdit {
    Q_OBJECT

public:
    explicit LongTextField(QWidget *parent = nullptr);

    void setWholeText(const QString &text);
    [[nodiscard]] const QString &wholeText() const { return m_painted.text(); }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void copySelection(QClipboard::Mode mode) const;

    PaintedText m_painted;
};

}  // namespace quorbel
