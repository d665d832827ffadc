#include "core/AppDelegate.h"
#include "platform/bus/SingleInstance.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/Language.h"
#include "platform/gui/ProgramEnd.h"
#include "platform/gui/Storyboard.h"
#include "shell/MainStoryboard.h"
#include "shell/TerminationSignals.h"
#include "shell/TrayIcon.h"
#include "shell/WindowController.h"

#include <QApplication>
#include <QSocketNotifier>

#include <memory>

namespace {

using namespace quorbel;

/// Alert popups have to be placed, which Wayland leaves to no client: where there is an X server as
/// well, that one is used.
void preferX11() {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") &&
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY") && qEnvironmentVariableIsSet("DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
    }
}

/// Null when there is no session bus.
std::unique_ptr<QSocketNotifier> watchLaterStarts(SingleInstance &instance) {
    if (instance.fd() < 0) {
        return nullptr;
    }
    auto notifier = std::make_unique<QSocketNotifier>(instance.fd(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated,
                     [&instance, watch = notifier.get()] {
                         instance.dispatch();
                         // The session bus can go before the program does.
                         watch->setEnabled(instance.fd() >= 0);
                     });
    // A start during the load may have been read from the socket already.
    instance.dispatch();
    return notifier;
}

}  // namespace

int main(int argc, char **argv) {
    WindowController *shown = nullptr;
    SingleInstance instance([&shown] {
        if (shown != nullptr) {
            shown->makeVisible();
        }
    });
    if (instance.role() == SingleInstance::Role::kSecond) {
        return 0;
    }
    preferX11();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quorbel"));
    QApplication::setApplicationVersion(QStringLiteral(QUORBEL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.Halvern.Quorbel"));
    QApplication::setQuitOnLastWindowClosed(false);
    useLanguageOf(QLocale::system());
    applyAppearance(application);

    AppDelegate delegate;
    Storyboard storyboard;
    fillMainStoryboard(storyboard, delegate);
    WindowController window(delegate, storyboard);
    window.windowDidLoad();
    const TrayIcon tray(window);
    window.setReopenable([&tray, &instance] { return tray.isShown() || instance.fd() >= 0; });
    window.makeVisible();

    shown = &window;
    const auto laterStarts = watchLaterStarts(instance);
    const TerminationSignals signals([] { endProgram(); });
    return QApplication::exec();
}
