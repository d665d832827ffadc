#pragma once

#include <QAbstractFileIconProvider>

namespace quorbel {

/// The pictures and types of a list of files, told from their names alone: whatever looks into a
/// file to tell its type, as Qt's own does, waits for ever for some of /proc, and long for a slow
/// network. Lives as long as the program, since lists ask from threads of their own until the very
/// end.
QAbstractFileIconProvider &fileIcons();

}  // namespace quorbel
