#pragma once

#include "platform/gui/RowTableView.h"

namespace quorbel {

/// The table of a report.
class ReportTableView : public RowTableView {
    Q_OBJECT

public:
    explicit ReportTableView(QWidget *parent = nullptr);

    /// The width that all columns together may have so that none is hidden, with or without a
    /// vertical scroll bar.
    [[nodiscard]] int widthForColumns() const;
    /// Scrolls until the first of the `count` rows below `row` are in sight, and `row` with them;
    /// not at all when they are.
    void revealBelow(int row, int count);
    /// -1 without one.
    [[nodiscard]] int selectedRow() const;
    /// Selects that row alone and scrolls to it.
    void goTo(int row);
    /// The first row in sight.
    [[nodiscard]] int topRow() const;
    void setTopRow(int row);

Q_SIGNALS:
    /// Space.
    void togglePressed();
    /// Return or Enter.
    void openPressed();
    /// The right arrow.
    void expandPressed();
    /// The left arrow.
    void collapsePressed();
    /// "*".
    void expandAllPressed();
    /// "/".
    void collapseAllPressed();
    /// Ctrl with the arrow down.
    void nextSmallerPressed();
    /// Ctrl with the arrow up.
    void nextLargerPressed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    /// Of a detail's row only, doubleClicked() is emitted.
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void tellOnce(const QKeyEvent &event, void (ReportTableView::*what)());
    bool goBySize(int key);
};

}  // namespace quorbel
