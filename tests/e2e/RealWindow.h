#pragma once

#include "e2e/Desktop.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QList>
#include <QRect>
#include <QVariant>

#include <functional>
#include <optional>

namespace quorbel::testing {

/// Where an object of a program's window is found on the accessibility bus.
struct AccessibleAddress {
    QString program;
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const AccessibleAddress &address);
const QDBusArgument &operator>>(const QDBusArgument &argument, AccessibleAddress &address);

/// The program Quorbel as a process on a desktop, seen and used as a person does: its texts come
/// from the accessibility bus, its controls are pressed with the pointer.
class RealWindow {
public:
    /// Returns when the window is shown, with what the log files in the folder held.
    RealWindow(const Desktop &desktop, const QString &library);
    ~RealWindow();
    RealWindow(const RealWindow &) = delete;
    RealWindow &operator=(const RealWindow &) = delete;

    /// A text of the home page: "Error" gives the number of errors.
    [[nodiscard]] QString homeText(const QString &caption) const;
    /// Presses the control with this name that is on screen; false when none appears.
    [[nodiscard]] bool press(const QString &name) const;
    /// Opens the chooser that shows this text and presses the item; false when one of them does
    /// not appear.
    [[nodiscard]] bool choose(const QString &shown, const QString &item) const;
    /// Whether a control or text with this name is on screen.
    [[nodiscard]] bool shows(const QString &name) const;

    /// The table of events.
    [[nodiscard]] int rows() const;
    [[nodiscard]] QString cell(int row, int column) const;
    void clickCell(int row, int column) const;

    /// Stops its execution, as a debugger does, or lets it go on.
    void suspend(bool stop) const;
    /// Asks it to end as a session does (SIGTERM); whether it ended with 0.
    [[nodiscard]] bool quit();

private:
    using Test = std::function<bool(const AccessibleAddress &)>;

    [[nodiscard]] QVariant ask(const AccessibleAddress &object, const char *interface,
                               const char *method, const QVariantList &arguments = {}) const;
    [[nodiscard]] QVariant property(const AccessibleAddress &object, const char *interface,
                                    const char *name) const;
    [[nodiscard]] QString name(const AccessibleAddress &object) const;
    [[nodiscard]] QString role(const AccessibleAddress &object) const;
    [[nodiscard]] bool isOnScreen(const AccessibleAddress &object) const;
    [[nodiscard]] QList<AccessibleAddress> children(const AccessibleAddress &object) const;
    [[nodiscard]] std::optional<AccessibleAddress> find(const AccessibleAddress &under,
                                                        const Test &test) const;
    [[nodiscard]] std::optional<AccessibleAddress> find(const Test &test) const;
    [[nodiscard]] const AccessibleAddress &table() const;
    [[nodiscard]] AccessibleAddress cellAddress(int row, int column) const;
    bool clickOn(const AccessibleAddress &object) const;

    const Desktop &m_desktop;
    QProcess m_process;
    QDBusConnection m_bus;
    AccessibleAddress m_program;
    mutable std::optional<AccessibleAddress> m_table;  ///< once it was seen
};

}  // namespace quorbel::testing
