#include "PictureStage.h"

#include <QContextMenuEvent>
#include <QRegularExpression>

namespace quorbel {

namespace {

testing::ServiceStandIn::UserInfo alertingEvent(const char *priority, const char *message) {
    return {{"Type", "Set"},
            {"Date", "1790000000"},
            {"Priority", priority},
            {"Host", "core-sw1.example.org"},
            {"Message", message}};
}

void waitForPopup(const Stage &stage, const char *priority, const char *message) {
    stage.click("Scan");
    stage.notify(alertingEvent(priority, message));
    Stage::shownWindow("popupWindow");
    QTest::qWait(1400);  // until it has grown
}

/// Opens the menu over the current row, as the Menu key does.
void openRowMenu(QTableView &table) {
    const QPoint place = table.visualRect(table.currentIndex()).center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, table.mapToGlobal(place));
    QCoreApplication::sendEvent(&table, &event);
    QTest::qWait(kSettleMs);
}

/// Shows a report, with the first group expanded if asked for.
std::function<void(Stage &)> report(int kind, bool expand) {
    return [kind, expand](const Stage &stage) {
        stage.click("Reports");
        stage.choose("reportName", kind);
        stage.click("reportDisplay");
        if (expand) {
            stage.clickRow("ReportsView", "tableView", 0);
        }
    };
}

/// A filter of several conditions.
void find(const Stage &stage) {
    stage.type("findText", "10.0.");
    stage.press("findText", Qt::Key_Return);
    QTest::mouseClick(stage.control<QWidget>("findField")
                          .findChildren<QAbstractButton *>(QLatin1String("findCondition"))
                          .last(),
                      Qt::LeftButton);
    stage.type("findText", "in");
}

/// Chooses from the menu of a button, downwards from the entry in use.
void chooseBelow(const Stage &stage, const char *button, int steps) {
    stage.click(button);
    for (int i = 0; i < steps; ++i) {
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
    }
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
    QTest::qWait(kSettleMs);
}

/// Opens the timeline and narrows the table to a part of it: from one hundredth of its width on, up
/// to another one.
void narrow(const Stage &stage, int from, int until) {
    stage.click("timelineToggle");
    auto &timeline = stage.control<QWidget>("timeline");
    const auto place = [&timeline](int hundredth) {
        return QPoint(timeline.width() * hundredth / 100, 10);
    };
    QTest::mousePress(&timeline, Qt::LeftButton, Qt::ShiftModifier, place(from));
    QTest::mouseMove(&timeline, place(until));
    QTest::mouseRelease(&timeline, Qt::LeftButton, Qt::ShiftModifier, place(until));
    QTest::qWait(kSettleMs);
}

/// Keeps a filter in use under a name, and marks what two questions mean.
void keepAndMark(const Stage &stage) {
    const auto openQuestions = [&stage] {
        stage.click("findSaved");
        QTest::qWait(kSettleMs);
    };
    const auto mark = [&](const char *question) {
        stage.control<QLineEdit>("findSavedText").clear();
        stage.type("findSavedText", question);
        QTest::keyClick(&stage.control<QWidget>("findSavedText"), Qt::Key_Return,
                        Qt::ControlModifier);
    };
    stage.type("findText", "interface");
    openQuestions();
    // The pictures before may have kept it.
    static const QRegularExpression none(QStringLiteral("\\b0\\b"));
    if (stage.control<QLineEdit>("findSavedText").placeholderText().contains(none)) {
        stage.click("findSavedKeep");
        stage.type("findSavedName", "Interfaces of the core switch, on both sides of the house");
        stage.click("findSavedOk");
        mark("links up");
        mark("failed logins");
    }
    stage.control<QWidget>("findSavedPanel").hide();
    stage.click("findClear");
    QTest::qWait(kSettleMs);
}

}  // namespace

std::vector<Picture> questionPictures() {
    const auto openFilling = [](bool fillsScreen) {
        return [fillsScreen](const Stage &stage) {
            stage.click("Scan");
            if (fillsScreen) {
                stage.window->setMinimumSize(0, 0);
                stage.window->showMaximized();
                QTest::qWait(kSettleMs);
            }
            keepAndMark(stage);
            stage.click("findSaved");
            QTest::qWait(4 * kSettleMs);
        };
    };
    return {
        {"events-questions", Sample::kBad, "findSavedPanel", openFilling(false)},
        {"events-questions-small", Sample::kBad, "WindowController", openFilling(true),
         /*isOfSmallScreen=*/true},
        {"events-marked", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             keepAndMark(stage);
             stage.clickRow("ScanView", "tableView", 2);
         }},
    };
}

std::vector<Picture> pagePictures() {
    const auto nothing = [](Stage & /*stage*/) {};
    const auto events = [](Stage &stage) { stage.click("Scan"); };
    return {
        {"home-normal", Sample::kQuiet, "WindowController", nothing},
        {"home-moderate", Sample::kBusy, "WindowController", nothing},
        {"home-severe", Sample::kTwoDays, "WindowController",
         [](Stage &stage) {
             stage.window->resize(1120, 720);
             QTest::qWait(kSettleMs);
         }},
        {"home-empty", Sample::kEmpty, "WindowController", nothing},
        {"home-large", Sample::kTwoDays, "WindowController",
         [](Stage &stage) {
             stage.window->resize(1600, 1000);
             QTest::qWait(kSettleMs);
         }},
        {"home-small", Sample::kTwoDays, "WindowController",
         [](Stage &stage) {
             stage.window->setMinimumSize(0, 0);
             stage.window->resize(800, 500);
         }},
        {"service", Sample::kQuiet, "serviceSheet",
         [](Stage &stage) {
             stage.click("serviceDetails");
             QTest::qWait(kSettleMs);
         }},
        {"events-empty", Sample::kEmpty, "WindowController", events},
        {"events", Sample::kBad, "WindowController", events},
        {"events-long", Sample::kLongTexts, "WindowController", events},
        {"events-menu", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             stage.clickRow("ScanView", "tableView", 3);
             openRowMenu(*stage.control<QWidget>("ScanView").findChild<QTableView *>());
         }},
        {"events-held", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             stage.click("holdEvents");
         }},
        {"events-filtered", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             find(stage);
             chooseBelow(stage, "findSeverity", 6);
             chooseBelow(stage, "findSpan", 2);
         }},
        {"events-filtered-small", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             stage.window->setMinimumSize(0, 0);
             stage.window->resize(800, 500);
             find(stage);
         }},
        {"events-filtered-large", Sample::kDay, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             stage.window->resize(2560, 1440);
             narrow(stage, 40, 90);
             find(stage);
             chooseBelow(stage, "findSeverity", 6);
         }},
        {"events-none-found", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             find(stage);
             stage.type("findText", "moon");
         }},
        {"events-timeline", Sample::kDay, "WindowController",
         [](Stage &stage) {
             stage.click("Scan");
             narrow(stage, 62, 72);
             stage.type("findText", "sdb1");
         }},
        {"details", Sample::kBad, "eventView",
         [](Stage &stage) {
             stage.click("Scan");
             stage.clickRow("ScanView", "tableView", 1, 4, true);
         }},
        {"details-long", Sample::kLongTexts, "eventView",
         [](Stage &stage) {
             stage.click("Scan");
             stage.clickRow("ScanView", "tableView", 4, 4, true);
         }},
        {"popup-normal", Sample::kQuiet, "popupWindow",
         [](Stage &stage) {
             waitForPopup(stage, "Local7.Informational", "Interface Gi0/12 is up, 1000 Mbit/s");
         }},
        {"popup-moderate", Sample::kQuiet, "popupWindow",
         [](Stage &stage) {
             waitForPopup(stage, "Local7.Warning", "Fan 2 runs at 38 % of its nominal speed");
         }},
        {"popup-severe", Sample::kQuiet, "popupWindow",
         [](Stage &stage) {
             waitForPopup(stage, "Kern.Critical",
                          "Power supply 1 has failed; the chassis runs on power supply 2 alone");
         }},
        {"about", Sample::kQuiet, "aboutView",
         [](Stage &stage) {
             stage.window->About();
             QTest::qWait(kSettleMs);
         }},
        {"help", Sample::kQuiet, "helpWindow",
         [](Stage &stage) {
             stage.window->Help();
             QTest::qWait(kSettleMs);
         }},
        {"reports-empty", Sample::kBad, "WindowController",
         [](Stage &stage) { stage.click("Reports"); }},
        {"reports-host", Sample::kBad, "WindowController", report(0, false)},
        {"reports-host-expanded", Sample::kBad, "WindowController", report(0, true)},
        {"reports-message", Sample::kBad, "WindowController", report(1, false)},
        {"reports-message-expanded", Sample::kBad, "WindowController", report(1, true)},
        {"reports-priority", Sample::kBad, "WindowController", report(2, false)},
        {"reports-priority-expanded", Sample::kBad, "WindowController", report(2, true)},
        {"reports-date", Sample::kBad, "WindowController", report(3, false)},
        {"reports-date-expanded", Sample::kBad, "WindowController", report(3, true)},
    };
}

}  // namespace quorbel
