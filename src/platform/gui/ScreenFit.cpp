#include "platform/gui/ScreenFit.h"

#include <QEvent>
#include <QMargins>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace quorbel {

namespace {

bool isFramed(const QWidget &window) {
    return window.windowHandle() != nullptr && window.windowHandle()->isExposed();
}

QMargins usualFrame(const QWidget &window) {
    const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
    constexpr int kBorder = 1;
    return {kBorder, title, kBorder, kBorder};
}

/// `place` as far as it has to be moved to lie in `area`: its upper left rather than its lower
/// right end, where there is no room for both.
QRect movedInto(QRect place, const QRect &area) {
    place.moveRight(std::min(place.right(), area.right()));
    place.moveBottom(std::min(place.bottom(), area.bottom()));
    place.moveLeft(std::max(place.left(), area.left()));
    place.moveTop(std::max(place.top(), area.top()));
    return place;
}

}  // namespace

QMargins frameAround(const QWidget &window) {
    for (const QWidget *widget = window.window(); widget != nullptr;
         widget = widget->parentWidget() != nullptr ? widget->parentWidget()->window() : nullptr) {
        if (isFramed(*widget)) {
            return widget->windowHandle()->frameMargins();
        }
    }
    return usualFrame(window);
}

QSize roomOnScreen(const QWidget &window) {
    return window.screen()->availableGeometry().marginsRemoved(frameAround(window)).size();
}

void moveOntoScreen(QWidget &window) {
    const QRect room = window.screen()->availableGeometry().marginsRemoved(frameAround(window));
    window.setGeometry(movedInto(window.geometry(), room));
}

ScreenFit::ScreenFit(QWidget &window, QSize wanted)
    : QObject(&window), m_window(window), m_wanted(wanted) {
    m_window.installEventFilter(this);
    m_window.setMinimumSize(m_wanted.boundedTo(roomOnScreen(m_window)));
}

void ScreenFit::openAtMinimum() {
    m_window.resize(m_window.minimumSize());
    const QRect area = m_window.screen()->availableGeometry();
    QRect frame = m_window.frameGeometry();
    frame.moveCenter(area.center());
    // There will be a frame; in the middle, it may be too low for it.
    const QSize framed = m_window.size().grownBy(frameAround(m_window));
    m_window.move(movedInto(QRect(frame.topLeft(), framed), area).topLeft());
}

bool ScreenFit::eventFilter(QObject *watched, QEvent *event) {
    if (watched == &m_window && event->type() == QEvent::Show && m_window.windowHandle()) {
        QWindow *handle = m_window.windowHandle();
        handle->installEventFilter(this);
        connect(handle, &QWindow::screenChanged, this, &ScreenFit::follow, Qt::UniqueConnection);
        follow(handle->screen());
    } else if (watched == m_window.windowHandle() && event->type() == QEvent::Expose &&
               !m_isFramed && m_window.windowHandle()->isExposed()) {
        m_isFramed = true;
        windowExposed();
    }
    return QObject::eventFilter(watched, event);
}

// Only now is the frame known.
void ScreenFit::windowExposed() {
    const QRect screen = m_window.screen()->availableGeometry();
    if (screen.contains(m_window.frameGeometry())) {
        return;
    }
    const QSize room = roomOnScreen(m_window);
    m_window.setMinimumSize(m_window.minimumSize().boundedTo(room));
    m_window.resize(m_window.size().boundedTo(room));
    moveOntoScreen(m_window);
}

void ScreenFit::follow(QScreen *screen) {
    if (screen == m_screen) {
        return;
    }
    const bool isAnother = m_screen != nullptr;
    if (m_screen) {
        m_screen->disconnect(this);
    }
    m_screen = screen;
    if (screen != nullptr) {
        connect(screen, &QScreen::availableGeometryChanged, this, &ScreenFit::screenChanged);
    }
    if (isAnother) {
        screenChanged();
    }
}

void ScreenFit::screenChanged() {
    const QSize room = roomOnScreen(m_window);
    m_window.setMinimumSize(m_wanted.boundedTo(room));
    if (m_window.isMaximized() || m_window.isFullScreen()) {
        return;
    }
    m_window.resize(m_window.size().boundedTo(room));
    moveOntoScreen(m_window);
}

}  // namespace quorbel
