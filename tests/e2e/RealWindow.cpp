#include "e2e/RealWindow.h"

#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

#include <csignal>
#include <stdexcept>

Q_DECLARE_METATYPE(quorbel::testing::AccessibleAddress)

namespace quorbel::testing {

namespace {

// The interfaces and their numbers are those of AT-SPI 2.
constexpr const char *kAccessible = "org.a11y.atspi.Accessible";
constexpr const char *kTable = "org.a11y.atspi.Table";
constexpr const char *kComponent = "org.a11y.atspi.Component";
constexpr quint32 kScreenCoordinates = 0;
constexpr unsigned kStateShowing = 25;
/// Each display has a bus of its own.
QString newBusName() {
    static int count = 0;
    return QStringLiteral("accessibility %1").arg(++count);
}

QRect rectangle(const QVariant &reply) {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    const auto argument = reply.value<QDBusArgument>();
    argument.beginStructure();
    argument >> x >> y >> width >> height;
    argument.endStructure();
    return {x, y, width, height};
}

}  // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const AccessibleAddress &address) {
    argument.beginStructure();
    argument << address.program << address.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AccessibleAddress &address) {
    argument.beginStructure();
    argument >> address.program >> address.path;
    argument.endStructure();
    return argument;
}

RealWindow::RealWindow(const Desktop &desktop, const QString &library)
    : m_desktop(desktop),
      m_bus(QDBusConnection::connectToBus(desktop.accessibilityBus(), newBusName())) {
    qDBusRegisterMetaType<AccessibleAddress>();
    qDBusRegisterMetaType<QList<AccessibleAddress>>();
    QProcessEnvironment environment = desktop.environment();
    environment.insert(QStringLiteral("QUORBEL_LIBRARY"), library);
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    startOwn(m_process, QStringLiteral(QUORBEL_PROGRAM));
    const AccessibleAddress registry{
        QStringLiteral("org.a11y.atspi.Registry"),
        QDBusObjectPath(QStringLiteral("/org/a11y/atspi/accessible/root"))};
    const bool appeared = waitUntil([&] {
        const QList<AccessibleAddress> programs = children(registry);
        m_program = programs.value(0);
        return programs.size() == 1 && shows(QStringLiteral("Navigation"));
    });
    if (!appeared) {
        throw std::runtime_error("the window does not appear");
    }
}

RealWindow::~RealWindow() {
    m_process.kill();
    m_process.waitForFinished(kPatience.count());
    QDBusConnection::disconnectFromBus(m_bus.name());
}

void RealWindow::suspend(bool stop) const {
    ::kill(static_cast<pid_t>(m_process.processId()), stop ? SIGSTOP : SIGCONT);
}

bool RealWindow::quit() {
    m_process.terminate();
    return m_process.waitForFinished(kPatience.count()) &&
           m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

QVariant RealWindow::ask(const AccessibleAddress &object, const char *interface, const char *method,
                         const QVariantList &arguments) const {
    QDBusMessage call = QDBusMessage::createMethodCall(
        object.program, object.path.path(), QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    return m_bus.call(call).arguments().value(0);
}

QVariant RealWindow::property(const AccessibleAddress &object, const char *interface,
                              const char *name) const {
    return ask(object, "org.freedesktop.DBus.Properties", "Get",
               {QLatin1String(interface), QLatin1String(name)})
        .value<QDBusVariant>()
        .variant();
}

QString RealWindow::name(const AccessibleAddress &object) const {
    return property(object, kAccessible, "Name").toString();
}

QString RealWindow::role(const AccessibleAddress &object) const {
    return ask(object, kAccessible, "GetRoleName").toString();
}

bool RealWindow::isOnScreen(const AccessibleAddress &object) const {
    const auto states = qdbus_cast<QList<quint32>>(ask(object, kAccessible, "GetState"));
    return (states.value(0) >> kStateShowing & 1U) != 0;
}

QList<AccessibleAddress> RealWindow::children(const AccessibleAddress &object) const {
    return qdbus_cast<QList<AccessibleAddress>>(ask(object, kAccessible, "GetChildren"));
}

/// Depth first; what is not on screen, and the cells of tables, are left out.
std::optional<AccessibleAddress> RealWindow::find(const AccessibleAddress &under,
                                                  const Test &test) const {
    for (const AccessibleAddress &child : children(under)) {
        if (!isOnScreen(child)) {
            continue;
        }
        if (test(child)) {
            return child;
        }
        if (role(child) == QLatin1String("table")) {
            continue;
        }
        if (const auto found = find(child, test)) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<AccessibleAddress> RealWindow::find(const Test &test) const {
    return find(m_program, test);
}

bool RealWindow::shows(const QString &wanted) const {
    return find([&](const AccessibleAddress &object) { return name(object) == wanted; })
        .has_value();
}

QString RealWindow::homeText(const QString &caption) const {
    const QString start = caption + QStringLiteral(": ");
    const auto label =
        find([&](const AccessibleAddress &object) { return name(object).startsWith(start); });
    return label ? name(*label).mid(start.size()) : QString();
}

bool RealWindow::clickOn(const AccessibleAddress &object) const {
    const QRect place = rectangle(ask(object, kComponent, "GetExtents", {kScreenCoordinates}));
    if (place.isEmpty()) {
        return false;
    }
    m_desktop.click(place.center().x(), place.center().y());
    return true;
}

bool RealWindow::press(const QString &wanted) const {
    // A page or a text may be named like the control that opens it.
    const auto isControl = [&](const AccessibleAddress &object) {
        return name(object) == wanted && role(object) != QLatin1String("filler") &&
               role(object) != QLatin1String("label");
    };
    return waitUntil([&] {
        const auto control = find(isControl);
        return control && clickOn(*control);
    });
}

bool RealWindow::choose(const QString &shown, const QString &item) const {
    const auto isItem = [&](const AccessibleAddress &object) {
        return name(object) == item && role(object) == QLatin1String("list item");
    };
    if (!press(shown)) {
        return false;
    }
    const bool isChosen = waitUntil([&] {
        const auto listed = find(isItem);
        return listed && clickOn(*listed);
    });
    return isChosen && waitUntil([&] { return !find(isItem) && shows(item); });
}

const AccessibleAddress &RealWindow::table() const {
    if (!m_table) {
        m_table = find([&](const AccessibleAddress &object) {
            return name(object) == QLatin1String("Events, newest first");
        });
    }
    static const AccessibleAddress none;
    return m_table ? *m_table : none;
}

int RealWindow::rows() const {
    return property(table(), kTable, "NRows").toInt();
}

AccessibleAddress RealWindow::cellAddress(int row, int column) const {
    return qdbus_cast<AccessibleAddress>(ask(table(), kTable, "GetAccessibleAt", {row, column}));
}

QString RealWindow::cell(int row, int column) const {
    return name(cellAddress(row, column));
}

void RealWindow::clickCell(int row, int column) const {
    clickOn(cellAddress(row, column));
}

}  // namespace quorbel::testing
