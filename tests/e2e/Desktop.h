#pragma once

#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

namespace quorbel::testing {

/// A desktop of the test's own, without a screen that anyone sees: an X server with a window
/// manager, a session bus, and the accessibility bus over which programs tell assistive tools what
/// their windows hold. Everything on it dies with the test, also with one that crashes.
class Desktop {
public:
    /// Returns when all of it answers; throws std::runtime_error when something does not start.
    Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;
    ~Desktop();

    /// For programs that are to run on it.
    [[nodiscard]] const QProcessEnvironment &environment() const { return m_environment; }
    /// The address of the accessibility bus.
    [[nodiscard]] QString accessibilityBus() const;
    /// Moves the pointer there, in pixels of the screen, and presses the left button.
    void click(int x, int y) const;

private:
    void startDisplay();
    void startAccessibility();
    void startWindowManager();

    TemporaryFolder m_folder;
    PrivateBus m_session{PrivateBus::Serve::kSession};
    QProcessEnvironment m_environment;
    QProcess m_display;
    QProcess m_accessibility;
    QProcess m_windowManager;
};

/// Starts a program that dies with this thread, and waits until it runs.
void startOwn(QProcess &process, const QString &program, const QStringList &arguments = {});

}  // namespace quorbel::testing
