#include "soak/Robot.h"

#include "alerts/PopupView.h"
#include "common/Severity.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QScreen>
#include <QTableView>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
#include <optional>

namespace quorbel::soak {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

Robot::Robot(testing::FrontEnd &frontEnd, Collector &collector, StallWatch &watch,
             const QString &folder, unsigned seed)
    : RobotHands(frontEnd, watch, folder, seed), m_collector(collector) {}

const std::vector<Robot::Activity> &Robot::activities() {
    static const std::vector<Activity> kAll{
        {"visits pages", 6, &Robot::visitPages},
        {"searches", 6, &Robot::search},
        {"chooses ratings", 4, &Robot::chooseRatings},
        {"scrolls", 6, &Robot::scroll},
        {"opens details", 4, &Robot::openDetails},
        {"holds the list", 3, &Robot::holdList},
        {"folds the timeline", 2, &Robot::foldTimeline},
        {"deletes and undoes", 3, &Robot::deleteAndUndo},
        {"deletes", 2, &Robot::deleteRows},
        {"saves options", 2, &Robot::saveOptions},
        {"makes a report", 2, &Robot::makeReport},
        {"prints a report", 1, &Robot::printReport},
        {"exports events", 1, &Robot::exportEvents},
        {"looks at the service", 2, &Robot::openService},
        {"looks at the hosts", 2, &Robot::visitHosts},
        {"asks a question", 3, &Robot::askQuestion},
        {"reads the help book", 1, &Robot::readHelp},
        {"sets the periodic export", 1, &Robot::setExport},
        {"closes popups", 5, &Robot::closePopups},
        {"changes the size", 3, &Robot::changeSize},
        {"changes the screen", 2, &Robot::changeScreen},
    };
    return kAll;
}

void Robot::act() {
    const auto &all = activities();
    const int weights = std::accumulate(
        all.begin(), all.end(), 0, [](int sum, const Activity &one) { return sum + one.weight; });
    int left = any(1, weights);
    const auto chosen = std::ranges::find_if(
        all, [&left](const Activity &one) { return (left -= one.weight) <= 0; });
    act(*chosen);
}

void Robot::actAll() {
    for (const Activity &activity : activities()) {
        act(activity);
    }
}

void Robot::act(const Activity &activity) {
    begin(QString::fromLatin1(activity.name));
    ++m_done[activity.name];
    if (!(this->*activity.act)()) {
        m_failures.push_back(doing().toStdString());
    }
    closeDialogs();
    m_collector.holdFaults(false);
}

void Robot::rest() {
    begin(u"goes home"_s);
    closeDialogs();
    if (toEvents()) {
        if (auto *hold = find<QAbstractButton>("holdEvents");
            hold != nullptr && hold->isChecked()) {
            click("holdEvents");
        }
        click("findClear");
    }
    waitUntil([this] { return !m_frontEnd.delegate.hold.delays(); });
    waitUntil([this] { return (closePopups(), shownPopup() == nullptr); }, 5s);
    step(u"rests"_s);
}

std::string Robot::told() const {
    std::string text;
    for (const auto &[name, count] : m_done) {
        text += (text.empty() ? "" : ", ") + name + ' ' + std::to_string(count);
    }
    return text;
}

bool Robot::toEvents() {
    return click("Scan") && table() != nullptr;
}

QTableView *Robot::table() {
    return find<QTableView>("tableView");
}

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

bool Robot::holdFaults() {
    m_collector.holdFaults(true);
    step(u"waits until all is well"_s);
    return waitUntil([this] { return m_collector.isWell() && m_frontEnd.window->hearsService(); },
                     3 * testing::kPatience);
}

/// Commands are carried out in their order: behind the last one goes one that restores nothing.
bool Robot::waitForService() {
    step(u"waits for the service"_s);
    auto answer = std::make_shared<std::atomic<bool>>(false);
    m_frontEnd.delegate.setPipe(
        {{"command", "restore"}, {"Events", Array{}}, {"Listed", Array{}}},
        [answer](const std::optional<std::string> &reply) { *answer = reply.has_value(); });
    return waitUntil([answer] { return answer->load(); }, 3 * testing::kPatience);
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

bool Robot::exportEvents() {
    if (!toEvents() || table()->model()->rowCount() < 2) {
        return table() != nullptr;
    }
    clickRow(table(), 0);
    clickRow(table(), any(1, std::min(table()->model()->rowCount() - 1, 2'000)), Qt::ShiftModifier);
    return exportTo("exportEvents", u"events%1.txt"_s.arg(++m_files));
}

bool Robot::exportTo(const char *button, const QString &name) {
    return click(button) && saveInPanel(name) && isWritten(name);
}

/// And takes it away again: the disk is not this test's.
bool Robot::isWritten(const QString &name) const {
    const QString path = fileInFolder(name);
    return waitUntil([&] { return QFile::exists(path); }) && QFile::remove(path);
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
        auto *skip = popup->findChild<QAbstractButton *>(u"popupSkip"_s);
        const bool skips = skip != nullptr && skip->isVisible() && sometimes(2);
        QTest::mouseClick(skips ? static_cast<QWidget *>(skip) : popup->findChild<PopupView *>(),
                          Qt::LeftButton, {}, skips ? QPoint() : QPoint(3, 3));
        think();
    }
    return true;
}

QWidget *Robot::shownPopup() {
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "popupWindow"_L1 && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
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
