#include "alerts/PopupWindow.h"

#include "alerts/PopupView.h"

namespace quorbel {

PopupWindow::PopupWindow(const Storyboard &storyboard)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus),
      m_view(new PopupView(storyboard, this)) {
    setObjectName(QStringLiteral("popupWindow"));
    setWindowTitle(tr("Quorbel Alert"));
    setAccessibleName(windowTitle());
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
}

void PopupWindow::viewDidLoad() {
    m_view->viewDidLoad();
    m_view->ensurePolished();
    // A larger font than the form was drawn with may need more room than it was given.
    const QSize size = m_view->size().expandedTo(m_view->minimumSizeHint());
    m_view->setFixedSize(size);
    resize(size);
    // Some desktops hide the tool windows of a program that is not the active one. Only a window
    // that the desktop knows already takes this type (Qt 6.4).
    winId();
    setAttribute(Qt::WA_X11NetWmWindowTypeNotification);
}

}  // namespace quorbel
