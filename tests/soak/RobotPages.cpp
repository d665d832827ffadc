// What the robot does on all other pages, and with the window as a whole.

#include "alerts/PopupView.h"
#include "common/Severity.h"
#include "soak/Robot.h"

#include <QAction>
#include <QApplication>
#include <QScreen>
#include <QTableView>
#include <QTest>
#include <QWindow>

#include <string>

namespace quorbel::soak {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

bool Robot::visitPages() {
    static constexpr const char *kPages[] = {"Home", "Scan", "Reports", "Tools"};
    for (int i = any(2, 6); i > 0; --i) {
        if (!click(kPages[any(0, 3)])) {
            return false;
        }
    }
    static constexpr const char *kSettings[] = {"toolsOptions", "toolsActions", "toolsExport"};
    return click("Tools") && click(kSettings[any(0, 2)]) && click("onCancel");
}

bool Robot::saveOptions() {
    if (!click("Tools") || !click("toolsOptions")) {
        return false;
    }
    choose("severityError", any(0, 2));
    choose("severityNotice", any(0, 2));
    choose("userTimeFormat", sometimes(2) ? 0 : 2);
    click("definedDateFormat");
    if (!type("popupEventsTime", QString::number(any(1, 5)))) {
        return false;
    }
    return click("saveButton");
}

bool Robot::keepFor(int minutes) {
    begin(u"sets how long events are kept"_s);
    // What was never shown does not hear of its removal.
    if (!toEvents() || !click("Tools") || !click("toolsOptions")) {
        return false;
    }
    for (const SeverityClass &severity : kSeverityClasses) {
        const std::string name = "removal" + std::string(severity.keyPart);
        if (!click(name.c_str()) || !type((name + "Time").c_str(), QString::number(minutes)) ||
            !choose((name + "Units").c_str(), 0)) {
            return false;
        }
    }
    return click("saveButton");
}

bool Robot::showReport(int kind) {
    if (!click("Reports") || !choose("reportName", kind)) {
        return false;
    }
    return click("reportDisplay");
}

bool Robot::makeReport() {
    if (!showReport(any(0, 3))) {
        return false;
    }
    click("largestFirst");
    click("expandAll");
    click("collapseAll");
    return sometimes(2) || exportTo("exportResults", u"report%1.csv"_s.arg(++m_files));
}

/// Of a million messages each on a line nobody prints all.
bool Robot::printReport() {
    if (!showReport(sometimes(2) ? 0 : 2)) {
        return false;
    }
    const QString name = u"report%1.pdf"_s.arg(++m_files);
    return click("printResults") && printInDialog(name) && isWritten(name);
}

bool Robot::openService() {
    if (!click("serviceButton") && !click("serviceDetails")) {
        return false;
    }
    goOnFor(std::chrono::milliseconds(any(0, 2000)));
    return click("serviceClose");
}

bool Robot::visitHosts() {
    if (!click("Home")) {
        return false;
    }
    if (!click("allHosts")) {
        return true;  // the window is too low for it
    }
    clickRow(find<QTableView>("hostTable"), 0);
    goOnFor(std::chrono::milliseconds(any(0, 1000)));
    return click("hostsDone");
}

bool Robot::readHelp() {
    step(u"opens the help book"_s);
    m_frontEnd.window->findChild<QAction *>(u"applicationHelp"_s)->trigger();
    goOnFor(std::chrono::milliseconds(any(100, 1000)));
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "helpWindow"_L1 && window->isVisible()) {
            return window->close();
        }
    }
    return false;
}

/// On, or off again.
bool Robot::setExport() {
    if (!click("Tools") || !click("toolsExport") || !click("exportText")) {
        return false;
    }
    if (find<QAbstractButton>("exportText")->isChecked() &&
        (!type("textInterval", u"1"_s) || !type("textLocation", fileInFolder(u"service.csv"_s)))) {
        return false;
    }
    return click("saveButton");
}

bool Robot::closePopups() {
    goOnFor(std::chrono::milliseconds(any(0, 500)));
    if (QWidget *popup = shownPopup()) {
        step(u"closes a popup"_s);
        // Hours of them wait in a flood.
        auto *skip = popup->findChild<QAbstractButton *>(u"popupSkip"_s);
        const bool skips = skip != nullptr && skip->isVisible();
        QTest::mouseClick(skips ? static_cast<QWidget *>(skip) : popup->findChild<PopupView *>(),
                          Qt::LeftButton, {}, skips ? QPoint() : QPoint(3, 3));
        think();
    }
    return true;
}

bool Robot::changeSize() {
    auto &window = *m_frontEnd.window;
    for (int i = any(1, 8); i > 0; --i) {
        const QSize room = window.screen()->availableSize();
        step(u"resizes"_s);
        window.resize(any(room.width() / 2, room.width()), any(room.height() / 2, room.height()));
        think();
    }
    return true;
}

bool Robot::changeScreen() {
    const QList<QScreen *> screens = QGuiApplication::screens();
    QWindow *handle = m_frontEnd.window->windowHandle();
    QScreen *other = handle->screen() == screens.first() ? screens.last() : screens.first();
    step(u"moves to another screen"_s);
    handle->setScreen(other);
    return waitUntil([&] { return m_frontEnd.window->screen() == other; }, 5s);
}

}  // namespace quorbel::soak
