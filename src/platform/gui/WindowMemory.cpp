#include "platform/gui/WindowMemory.h"

#include <QStandardPaths>

namespace quorbel {

QSettings windowMemory() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return {folder + QStringLiteral("/QuorbelWindow.ini"), QSettings::IniFormat};
}

}  // namespace quorbel
