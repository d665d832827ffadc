#pragma once

#include <QFrame>
#include <QPointer>

namespace quorbel {

/// A frame of controls that opens below another control and closes when one clicks elsewhere or
/// presses Esc, and with the page that the control is on. Return presses the button that has the
/// focus.
class FindPanel : public QFrame {
    Q_OBJECT

public:
    explicit FindPanel(QWidget *parent);

    /// With its left or its right edge below the anchor's; the other one in a mirrored window.
    void openBelow(QWidget &anchor, Qt::AlignmentFlag edge = Qt::AlignLeft);

Q_SIGNALS:
    /// Return was pressed, and it was not on a button.
    void accepted();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPointer<QWidget> m_surroundings;  // of the other control; watched while it is open
};

}  // namespace quorbel
