#pragma once

#include "platform/gui/LetteredMenu.h"

#include <QSystemTrayIcon>

namespace quorbel {

class WindowController;

/// The application's icon in the desktop's tray: the application-level commands, also while the
/// main window is closed. Refers to the window, which outlives it.
class TrayIcon {
public:
    explicit TrayIcon(WindowController &window);

    /// Whether the desktop shows it.
    [[nodiscard]] bool isShown() const;

private:
    LetteredMenu m_menu;
    QSystemTrayIcon m_icon;
};

}  // namespace quorbel
