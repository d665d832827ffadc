#include "shell/TrayIcon.h"

#include "shell/WindowController.h"

#include <QAction>

namespace quorbel {

TrayIcon::TrayIcon(WindowController &window) {
    m_menu.setObjectName(QStringLiteral("trayMenu"));
    const QList<QAction *> commands = window.applicationCommands();
    for (QAction *command : commands) {
        if (command == commands.last()) {
            m_menu.addSeparator();
        }
        m_menu.addAction(command);
    }
    m_icon.setIcon(window.windowIcon());
    m_icon.setToolTip(window.windowTitle());
    m_icon.setContextMenu(&m_menu);
    QObject::connect(&m_icon, &QSystemTrayIcon::activated, &window,
                     [&window](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) {
                             window.makeVisible();
                         }
                     });
    m_icon.show();
}

bool TrayIcon::isShown() const {
    return QSystemTrayIcon::isSystemTrayAvailable() && m_icon.isVisible();
}

}  // namespace quorbel
