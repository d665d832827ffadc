// What the robot does on the events page.

#include "soak/Robot.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QTableView>

#include <algorithm>

namespace quorbel::soak {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

bool Robot::search() {
    static const QStringList kTexts{u"interface"_s, u"00042"_s, u"no such text"_s,  u"cost 10"_s,
                                    u"e"_s,         u"[17]"_s,  u"0 interface ge"_s};
    if (!toEvents()) {
        return false;
    }
    if (find<QLineEdit>("findText") == nullptr) {
        key(table(), Qt::Key_F, Qt::ControlModifier);
    }
    if (!type("findText", kTexts.at(any(0, static_cast<int>(kTexts.size()) - 1)))) {
        return false;
    }
    goOnFor(std::chrono::milliseconds(any(0, 1500)));
    if (sometimes(2)) {
        key(find<QLineEdit>("findText"), Qt::Key_Return);
        goOnFor(std::chrono::milliseconds(any(0, 1000)));
    }
    // Most people clear a search, some leave it.
    return sometimes(5) || click("findClear");
}

bool Robot::chooseRatings() {
    static constexpr const char *kRatings[] = {"findRatingNormal", "findRatingModerate",
                                               "findRatingSevere"};
    if (!toEvents()) {
        return false;
    }
    for (int i = any(1, 4); i > 0; --i) {
        click(kRatings[any(0, 2)]);
        goOnFor(std::chrono::milliseconds(any(0, 800)));
    }
    click("findClear");
    return true;
}

bool Robot::scroll() {
    static constexpr Qt::Key kKeys[] = {Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_End,
                                        Qt::Key_Home,     Qt::Key_Down,   Qt::Key_Up};
    if (!toEvents()) {
        return false;
    }
    for (int i = any(5, 40); i > 0; --i) {
        key(table(), kKeys[any(0, 5)]);
        goOnFor(std::chrono::milliseconds(any(0, 60)));
    }
    return true;
}

bool Robot::openDetails() {
    if (!toEvents() || !clickRow(table(), any(0, 10))) {
        return table() != nullptr && table()->model()->rowCount() == 0;
    }
    key(table(), Qt::Key_Return);
    if (!waitUntil([this] { return find<QAbstractButton>("onOK") != nullptr; }, 5s)) {
        return table()->model()->rowCount() == 0;
    }
    for (int i = any(0, 10); i > 0; --i) {
        click(sometimes(2) ? "eventUp" : "eventDown");
    }
    return click("onOK");
}

bool Robot::holdList() {
    if (!toEvents() || !click("holdEvents")) {
        return false;
    }
    goOnFor(std::chrono::milliseconds(any(200, 3000)));
    scroll();
    return click("holdEvents");
}

bool Robot::foldTimeline() {
    if (!toEvents() || !click("timelineToggle")) {
        return false;
    }
    goOnFor(std::chrono::milliseconds(any(200, 2000)));
    return click("timelineToggle");
}

/// Chooses some rows and deletes them.
bool Robot::deleteSome() {
    if (!toEvents()) {
        return false;
    }
    const int rows = table()->model()->rowCount();
    if (rows < 100) {
        return true;
    }
    if (!clickRow(table(), any(0, 50)) ||
        !clickRow(table(), any(51, std::min(rows - 1, sometimes(4) ? 20'000 : 200)),
                  Qt::ShiftModifier)) {
        return false;
    }
    return click("deleteEvents") && answer(u"Yes"_s);
}

bool Robot::deleteAndUndo() {
    if (!holdFaults() || !deleteSome()) {
        return false;
    }
    auto *undo = m_frontEnd.window->findChild<QAction *>(u"undoDelete"_s);
    step(u"undoes"_s);
    undo->trigger();
    const bool isDone = waitUntil([undo] { return !undo->isEnabled(); }, 10s);
    goOnFor(std::chrono::milliseconds(500));
    return waitForService() && isDone;
}

bool Robot::deleteRows() {
    return holdFaults() && deleteSome() && waitForService();
}

bool Robot::exportEvents() {
    if (!toEvents() || table()->model()->rowCount() < 2) {
        return table() != nullptr;
    }
    clickRow(table(), 0);
    clickRow(table(), any(1, std::min(table()->model()->rowCount() - 1, 2'000)), Qt::ShiftModifier);
    return exportTo("exportEvents", u"events%1.txt"_s.arg(++m_files));
}

bool Robot::askQuestion() {
    if (!toEvents()) {
        return false;
    }
    if (find<QAbstractButton>("findSaved") == nullptr) {
        key(table(), Qt::Key_F, Qt::ControlModifier);
    }
    if (!click("findSaved")) {
        return find<QAbstractButton>("findMore") != nullptr;  // it has no room
    }
    goOnFor(std::chrono::milliseconds(any(100, 2000)));
    QWidget *panel = QApplication::activePopupWidget();
    auto *list = panel != nullptr ? panel->findChild<QWidget *>(u"findSavedList"_s) : nullptr;
    if (list == nullptr) {
        return false;
    }
    for (int i = any(1, 12); i > 0; --i) {
        key(list, Qt::Key_Down);
    }
    key(list, Qt::Key_Return);
    goOnFor(std::chrono::milliseconds(any(100, 2000)));
    if (QWidget *left = QApplication::activePopupWidget()) {
        key(left, Qt::Key_Escape);
    }
    click("findClear");
    return QApplication::activePopupWidget() == nullptr;
}

}  // namespace quorbel::soak
