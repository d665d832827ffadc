#include "e2e/Desktop.h"

#include "support/WaitUntil.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <sys/prctl.h>

#include <csignal>
#include <stdexcept>

namespace quorbel::testing {

namespace {

constexpr int kPatienceMs = kPatience.count();

void end(QProcess &process) {
    process.terminate();
    if (!process.waitForFinished(kPatienceMs)) {
        process.kill();
        process.waitForFinished(kPatienceMs);
    }
}

}  // namespace

void startOwn(QProcess &process, const QString &program, const QStringList &arguments) {
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.start(program, arguments);
    if (!process.waitForStarted(kPatienceMs)) {
        throw std::runtime_error("cannot start " + program.toStdString());
    }
}

Desktop::Desktop() : m_environment(QProcessEnvironment::systemEnvironment()) {
    const QString folder = QString::fromStdString(m_folder.path().string());
    m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder);
    m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder);
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    m_environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
    m_environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    // libxkbcommon-x11 takes names without a terminator out of replies, within their lengths.
    m_environment.insert(QStringLiteral("ASAN_OPTIONS"),
                         m_environment.value(QStringLiteral("ASAN_OPTIONS")) +
                             QStringLiteral(":strict_string_checks=0"));
    startDisplay();
    startWindowManager();
    startAccessibility();
}

Desktop::~Desktop() {
    end(m_accessibility);
    end(m_windowManager);
    end(m_display);
}

void Desktop::startDisplay() {
    m_display.setProcessEnvironment(m_environment);
    m_display.setStandardErrorFile(QProcess::nullDevice());
    startOwn(m_display, QStringLiteral("Xvfb"),
             {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
              QStringLiteral("0"), QStringLiteral("1280x900x24"), QStringLiteral("-nolisten"),
              QStringLiteral("tcp"), QStringLiteral("-noreset")});
    while (!m_display.canReadLine() && m_display.waitForReadyRead(kPatienceMs)) {
    }
    if (!m_display.canReadLine()) {
        throw std::runtime_error("Xvfb does not start");
    }
    const QByteArray number = m_display.readLine().trimmed();
    m_environment.insert(QStringLiteral("DISPLAY"), QLatin1Char(':') + QString::fromLatin1(number));
}

void Desktop::startWindowManager() {
    m_windowManager.setProcessEnvironment(m_environment);
    m_windowManager.setStandardErrorFile(QProcess::nullDevice());
    startOwn(m_windowManager, QStringLiteral("openbox"));
    const bool manages = waitUntil([this] {
        QProcess question;
        question.setProcessEnvironment(m_environment);
        startOwn(question, QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")});
        return question.waitForFinished(kPatienceMs) && question.exitCode() == 0;
    });
    if (!manages) {
        throw std::runtime_error("openbox does not start");
    }
}

void Desktop::startAccessibility() {
    m_accessibility.setProcessEnvironment(m_environment);
    m_accessibility.setStandardErrorFile(QProcess::nullDevice());
    startOwn(m_accessibility, QStringLiteral("/usr/libexec/at-spi-bus-launcher"),
             {QStringLiteral("--launch-immediately")});
    if (!waitUntil([this] { return !accessibilityBus().isEmpty(); })) {
        throw std::runtime_error("the accessibility bus does not start");
    }
}

QString Desktop::accessibilityBus() const {
    const QString name = QStringLiteral("session");
    QString address;
    {
        QDBusConnection session =
            QDBusConnection::connectToBus(QString::fromStdString(m_session.address()), name);
        address = session
                      .call(QDBusMessage::createMethodCall(
                          QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                          QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")))
                      .arguments()
                      .value(0)
                      .toString();
    }
    QDBusConnection::disconnectFromBus(name);
    return address.startsWith(QLatin1String("unix:")) ? address : QString();
}

void Desktop::click(int x, int y) const {
    QProcess pointer;
    pointer.setProcessEnvironment(m_environment);
    startOwn(pointer, QStringLiteral("xdotool"),
             {QStringLiteral("mousemove"), QString::number(x), QString::number(y),
              QStringLiteral("click"), QStringLiteral("1")});
    pointer.waitForFinished(kPatienceMs);
}

}  // namespace quorbel::testing
