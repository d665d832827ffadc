#include "platform/gui/ProgramEnd.h"

#include <QCoreApplication>

namespace quorbel {

namespace {

bool isEnding = false;

}  // namespace

void endProgram() {
    isEnding = true;
    QCoreApplication *application = QCoreApplication::instance();
    QObject::connect(
        application, &QCoreApplication::aboutToQuit, application, [] { isEnding = false; },
        Qt::SingleShotConnection);
    // Not quit(), which an open sheet would refuse.
    QCoreApplication::exit();
}

bool isProgramEnding() {
    return isEnding;
}

}  // namespace quorbel
