#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>

class QMargins;
class QScreen;
class QWidget;

namespace quorbel {

/// What the window manager draws around a window. Until it has done so, the frame of the window
/// that this one stands over, or else as much as window managers usually draw.
[[nodiscard]] QMargins frameAround(const QWidget &window);

/// How large the window can be, without its frame, on its screen beside the desktop's own panels.
[[nodiscard]] QSize roomOnScreen(const QWidget &window);

/// Moves the window as far as it takes to have all of it, with its frame, on its screen.
void moveOntoScreen(QWidget &window);

/// Keeps a window's minimum size within the room on its screen, also where the screen, its
/// resolution or the desktop's panels change. A window that has become too large shrinks.
class ScreenFit : public QObject {
    Q_OBJECT

public:
    /// `window`, which becomes the parent, gets `wanted` as its minimum size where there is room.
    ScreenFit(QWidget &window, QSize wanted);

    /// Before the window is shown: gives it its minimum size, in the middle of the screen.
    void openAtMinimum();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void follow(QScreen *screen);
    void windowExposed();
    void screenChanged();

    QWidget &m_window;
    QSize m_wanted;
    QPointer<QScreen> m_screen;
    bool m_isFramed = false;  ///< whether the frame is what the window manager drew
};

}  // namespace quorbel
