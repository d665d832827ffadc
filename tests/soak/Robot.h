#pragma once

#include "soak/Collector.h"
#include "soak/RobotHands.h"

#include <map>
#include <string>
#include <vector>

namespace quorbel::soak {

/// Somebody who works with the window without a pause: looks at all pages, searches, deletes and
/// takes it back, saves settings, makes reports, exports and prints into a folder of its own. What
/// it does next depends on the seed. Main thread only.
class Robot : private RobotHands {
public:
    /// All of them outlive it.
    Robot(testing::FrontEnd &frontEnd, Collector &collector, StallWatch &watch,
          const QString &folder, unsigned seed);

    /// Saves that events of all severities are kept for so many minutes.
    bool keepFor(int minutes);
    /// Does one thing from begin to end.
    void act();
    /// Each of them once.
    void actAll();
    /// Leaves the window as somebody does who goes home: at the events, nothing open or held, no
    /// filter.
    void rest();

    using RobotHands::alerts;
    /// How often each was done.
    [[nodiscard]] std::string told() const;
    /// What could not be done that must be possible: with what was done then.
    [[nodiscard]] const std::vector<std::string> &failures() const { return m_failures; }

private:
    struct Activity {
        const char *name;
        int weight;
        bool (Robot::*act)();
    };
    static const std::vector<Activity> &activities();

    void act(const Activity &activity);
    /// Waits until nothing is wrong around the window; it stays so to the end of the activity.
    bool holdFaults();

    // The activities. Each says whether it could be done.
    bool visitPages();
    bool search();
    bool chooseRatings();
    bool scroll();
    bool openDetails();
    bool holdList();
    bool foldTimeline();
    bool deleteAndUndo();
    bool deleteRows();
    bool saveOptions();
    bool makeReport();
    bool printReport();
    bool exportEvents();
    bool openService();
    bool visitHosts();
    bool askQuestion();
    bool readHelp();
    bool setExport();
    bool closePopups();
    bool changeSize();
    bool changeScreen();

    bool toEvents();
    bool showReport(int kind);
    bool exportTo(const char *button, const QString &name);
    bool deleteSome();
    /// Whether the service has carried out all that it was told.
    bool waitForService();
    [[nodiscard]] bool isWritten(const QString &name) const;
    QTableView *table();
    static QWidget *shownPopup();

    Collector &m_collector;
    int m_files = 0;
    std::map<std::string, int> m_done;
    std::vector<std::string> m_failures;
};

}  // namespace quorbel::soak
