#pragma once

#include "platform/gui/Page.h"

#include <QDialog>
#include <QString>

namespace quorbel {

class ContentArea;
class Storyboard;

/// A modal dialog over a page or over another sheet, made anew for each opening and deleted when it
/// closes. Has the size that it was designed with, or as much more as the font takes. Where the
/// screen or the main window has no room for that, its content scrolls above its buttons.
///
/// Its form is a column, whose last row holds the buttons.
class Sheet : public QDialog, public PageLifeCycle {
    Q_OBJECT

public:
    explicit Sheet(QWidget *parent = nullptr);

    /// Shows the sheet over `presenter`'s window and returns at once; the sheet deletes itself
    /// after it was closed. `presenter` becomes its parent and stays reachable as presenter(). Its
    /// window takes no input meanwhile.
    ///
    /// Without a presenter, the sheet stands above all windows, and no other window takes input.
    void presentOver(QWidget *presenter);
    [[nodiscard]] QWidget *presenter() const { return m_presenter; }

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    [[nodiscard]] QSize wantedSize() const;
    [[nodiscard]] QSize room() const;
    void fit();

    ContentArea *m_content = nullptr;
    QSize m_designed;
    QWidget *m_presenter = nullptr;
};

/// Presents a new sheet over `presenter`; does nothing when the storyboard has none by that
/// identifier.
void presentSheet(const Storyboard &storyboard, const QString &identifier, QWidget *presenter);

}  // namespace quorbel
