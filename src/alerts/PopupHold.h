#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

class QWidget;

namespace quorbel {

/// Tells whether the pointer holds a popup open: from when it moves over it until it leaves.
///
/// A pointer that was parked where the popup comes up does not count, nor one that has not moved
/// for minutes: nobody may be there, and further alerts wait behind the popup.
class PopupHold : public QObject {
    Q_OBJECT

public:
    static constexpr int kLongestRestMs = 120'000;

    /// Belongs to the view, which covers all of the popup.
    explicit PopupHold(QWidget &view);

    [[nodiscard]] bool isHeld() const { return m_isHeld; }
Q_SIGNALS:
    void changed(bool isHeld);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void enter();
    void leave();
    void move();
    void setHeld(bool isHeld);

    QPoint m_last;           // where the pointer was
    bool m_canHold = false;  // it has entered
    bool m_isHeld = false;
    QTimer m_rest{this};
};

}  // namespace quorbel
