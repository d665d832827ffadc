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
    /// Scrolls down until the first of the `count` rows below `row` are in sight, and `row` with
    /// them; not at all when they are.
    void revealBelow(int row, int count);

Q_SIGNALS:
    /// Space, Return or Enter.
    void togglePressed();
    /// The right arrow.
    void expandPressed();
    /// The left arrow.
    void collapsePressed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
};

}  // namespace quorbel
