#pragma once

#include <QString>
#include <QVariant>

namespace quorbel {

// What the window remembers of its looks across starts: QuorbelWindow.ini in the user's
// configuration folder ($XDG_CONFIG_HOME, else ~/.config). It does not exist before there is
// something to remember. A thread of its own writes it, as a disk may be slow. Main thread only.

/// What was given to remember() last, whether it is on the disk yet or not.
QVariant remembered(const QString &key, const QVariant &otherwise = {});
/// Returns at once; it is written as soon as what came before it is.
void remember(const QString &key, const QVariant &value);
void forget(const QString &key);
/// Waits until all is written; done by itself when the application object ends.
void finishRemembering();

}  // namespace quorbel
