#pragma once

#include <QFrame>

namespace quorbel {

/// A frame of controls that opens below another control and closes when one clicks elsewhere or
/// presses Esc. Return presses the button that has the focus.
class FindPanel : public QFrame {
    Q_OBJECT

public:
    explicit FindPanel(QWidget *parent);

    /// With its left or its right edge below the anchor's.
    void openBelow(QWidget &anchor, Qt::AlignmentFlag edge = Qt::AlignLeft);

Q_SIGNALS:
    /// Return was pressed, and it was not on a button.
    void accepted();

protected:
    void keyPressEvent(QKeyEvent *event) override;
};

}  // namespace quorbel
