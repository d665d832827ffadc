#pragma once

#include "platform/gui/PaintedText.h"
#include "platform/gui/TextMarks.h"

#include <QClipboard>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <utility>
#include <vector>

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
    /// Of the texts that are set from now on.
    void setMarker(TextMarker marker) { m_marker = std::move(marker); }

protected:
    /// Leaves copying to the sheet while nothing of its text is selected, as does LongTextField.
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    [[nodiscard]] QMimeData *createMimeDataFromSelection() const override;

private:
    void paintMore();
    void mark();

    PaintedText m_painted;
    TextMarker m_marker;
};

/// The same in one line, of which one that is very long shows only the beginning.
class LongTextField : public QLineEdit {
    Q_OBJECT

public:
    explicit LongTextField(QWidget *parent = nullptr);

    void setWholeText(const QString &text);
    [[nodiscard]] const QString &wholeText() const { return m_painted.text(); }
    /// Of the texts that are set from now on.
    void setMarker(TextMarker marker) { m_marker = std::move(marker); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void copySelection(QClipboard::Mode mode) const;

    PaintedText m_painted;
    TextMarker m_marker;
    std::vector<TextRange> m_marks;
};

}  // namespace quorbel
