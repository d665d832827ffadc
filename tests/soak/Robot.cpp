#include "soak/Robot.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QTableView>

#include <algorithm>
#include <atomic>
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

bool Robot::exportTo(const char *button, const QString &name) {
    return click(button) && saveInPanel(name) && isWritten(name);
}

/// And takes it away again: the disk is not this test's.
bool Robot::isWritten(const QString &name) const {
    const QString path = fileInFolder(name);
    return waitUntil([&] { return QFile::exists(path); }) && QFile::remove(path);
}

QWidget *Robot::shownPopup() {
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "popupWindow"_L1 && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

}  // namespace quorbel::soak
