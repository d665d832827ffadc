#pragma once

#include <QSettings>

namespace quorbel {

/// What the window remembers of its looks across starts: QuorbelWindow.ini in the user's
/// configuration folder ($XDG_CONFIG_HOME, else ~/.config). It does not exist before there is
/// something to remember.
QSettings windowMemory();

}  // namespace quorbel
