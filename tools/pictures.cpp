// Takes the pictures of the windows: quorbel-pictures FOLDER [SUFFIX [NAME...]]
// In the language of the desktop; $QUORBEL_PICTURES_LANGUAGE may say "pseudo", for one made of the
// English texts, half as long again.
//
// Puts the real front-end together over prepared log files and settings, goes to each page and
// sheet through its controls, and saves what the display shows as FOLDER/NAME SUFFIX.png. Needs an
// X display with a window manager; tools/screenshots brings one along.

#include "SampleLibrary.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/Language.h"
#include "platform/gui/WindowMemory.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/PseudoLanguage.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableView>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <vector>

namespace quorbel {

namespace {

constexpr int kSettleMs = 400;
constexpr int kSmallScreen = 1000;  // pixels wide, or less

class Stage : public testing::FrontEnd {
public:
    explicit Stage(testing::ServiceStandIn &service) : m_service(service) {
        QTest::qWait(kSettleMs);
    }

    void click(const char *name) const {
        QTest::mouseClick(&control<QAbstractButton>(name), Qt::LeftButton);
        QTest::qWait(kSettleMs);
    }
    void clickRow(const char *page, const char *table, int row, int column = 0,
                  bool twice = false) const {
        auto &view = *control<QWidget>(page).findChild<QTableView *>(QLatin1String(table));
        const QPoint point = view.visualRect(view.model()->index(row, column)).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, point);
        if (twice) {
            QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, point);
        }
        QTest::qWait(kSettleMs);
    }
    void clickIn(const char *container, const char *name) const {
        auto &place = control<QWidget>(container);
        QTest::mouseClick(place.findChild<QAbstractButton *>(QLatin1String(name)), Qt::LeftButton);
        QTest::qWait(kSettleMs);
    }
    /// Chooses the item with the arrow keys, from a list without a choice or on its first item.
    void choose(const char *name, int item) const {
        auto &list = control<QComboBox>(name);
        while (list.currentIndex() < item) {
            QTest::keyClick(&list, Qt::Key_Down);
        }
    }
    /// Scrolls so far down that the control is in sight.
    void scrollTo(const char *area, const char *name) const {
        control<QScrollArea>(area).verticalScrollBar()->setValue(
            control<QWidget>(name).mapTo(control<QScrollArea>(area).widget(), QPoint()).y() - 12);
        QTest::qWait(kSettleMs);
    }
    void type(const char *field, const char *text) const {
        auto &line = control<QLineEdit>(field);
        line.setFocus();
        QTest::keyClicks(&line, QString::fromUtf8(text));
        QTest::qWait(kSettleMs);
    }
    void press(const char *name, Qt::Key key) const {
        QTest::keyClick(&control<QWidget>(name), key);
        QTest::qWait(kSettleMs);
    }
    void notify(const testing::ServiceStandIn::UserInfo &event) const { m_service.notify(event); }

    /// The visible window of this name; null when it does not appear.
    static QWidget *shownWindow(const char *name) {
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < 10'000) {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (window->objectName() == QLatin1String(name) && window->isVisible()) {
                    return window;
                }
            }
            QTest::qWait(20);
        }
        return nullptr;
    }

private:
    testing::ServiceStandIn &m_service;
};

struct Picture {
    const char *name;
    Sample sample;
    const char *window;  ///< whose window is shown
    std::function<void(Stage &)> prepare;
    bool isOfSmallScreen = false;  ///< all of such a screen, on which the others are not taken
};

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

void openOptions(const Stage &stage) {
    stage.click("Tools");
    stage.click("toolsOptions");
}

void openActions(const Stage &stage) {
    stage.click("Tools");
    stage.click("toolsActions");
}

void editFirstAction(const Stage &stage) {
    openActions(stage);
    stage.clickRow("ToolsViewActions", "actionsTable", 0);
    stage.click("actionsEdit");
}

/// Opens a sheet of the action editor.
std::function<void(Stage &)> editing(const char *link) {
    return [link](const Stage &stage) {
        editFirstAction(stage);
        stage.click(link);
    };
}

/// Opens a sheet of the actions page.
std::function<void(Stage &)> fromActions(const char *link) {
    return [link](const Stage &stage) {
        openActions(stage);
        stage.click(link);
    };
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
    if (stage.control<QLineEdit>("findSavedText").placeholderText().contains(u" 0 kept")) {
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

std::vector<Picture> settingsPictures() {
    const auto optionsAt = [](const char *name) {
        return [name](const Stage &stage) {
            openOptions(stage);
            stage.scrollTo("scrollView", name);
        };
    };
    return {
        {"tools", Sample::kBad, "WindowController", [](Stage &stage) { stage.click("Tools"); }},
        {"options", Sample::kBad, "WindowController", openOptions},
        {"options-retention", Sample::kBad, "WindowController", optionsAt("removalEmergency")},
        {"options-alerts", Sample::kBad, "WindowController", optionsAt("popupEventsDisplay")},
        {"options-filters", Sample::kBad, "WindowController", optionsAt("includeFiltersTable")},
        {"options-empty", Sample::kEmpty, "WindowController", openOptions},
        {"filter", Sample::kBad, "filterView",
         [](Stage &stage) {
             openOptions(stage);
             stage.scrollTo("scrollView", "excludeFiltersTable");
             stage.clickRow("ToolsViewOptions", "excludeFiltersTable", 1);
             stage.click("excludeFiltersEdit");
         }},
        {"actions", Sample::kBad, "WindowController", openActions},
        {"actions-empty", Sample::kEmpty, "WindowController", openActions},
        {"action", Sample::kBad, "actionView", editFirstAction},
        {"action-run", Sample::kBad, "commandRun", editing("actionRunText")},
        {"action-email", Sample::kBad, "commandEmail", editing("actionEmailText")},
        {"action-event", Sample::kBad, "commandEvent", editing("actionEventText")},
        {"email-server", Sample::kBad, "emailServer", fromActions("emailServer")},
        {"email-format", Sample::kBad, "emailFormat", fromActions("emailFormat")},
        {"email-test", Sample::kBad, "emailTest", fromActions("emailTest")},
        {"export", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Tools");
             stage.click("toolsExport");
         }},
    };
}

std::vector<Picture> pictures() {
    const auto nothing = [](Stage & /*stage*/) {};
    const auto events = [](Stage &stage) { stage.click("Scan"); };
    std::vector<Picture> all{
        {"home-normal", Sample::kQuiet, "WindowController", nothing},
        {"home-moderate", Sample::kBusy, "WindowController", nothing},
        {"home-severe", Sample::kBad, "WindowController", nothing},
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
    std::ranges::move(questionPictures(), std::back_inserter(all));
    std::ranges::move(settingsPictures(), std::back_inserter(all));
    return all;
}

bool save(const Picture &picture, testing::ServiceStandIn &service, const QString &file) {
    windowMemory().clear();  // each begins as the window does for a new user
    const testing::TemporaryFolder library;
    writeSample(picture.sample, library);
    qputenv("QUORBEL_LIBRARY", library.path().c_str());
    Stage stage(service);
    picture.prepare(stage);
    QWidget *window = Stage::shownWindow(picture.window);
    if (window == nullptr) {
        return false;
    }
    QTest::qWait(kSettleMs);
    const WId shown = picture.isOfSmallScreen ? 0 : window->winId();
    return window->screen()->grabWindow(shown).save(file);
}

int run(const QStringList &arguments) {
    const QString folder = arguments.value(1);
    const QString suffix = arguments.value(2);
    const QStringList wanted = arguments.mid(3);
    const testing::PrivateBus bus;
    testing::ServiceStandIn service;
    const bool isSmall = QGuiApplication::primaryScreen()->size().width() <= kSmallScreen;
    bool all = true;
    for (const Picture &picture : pictures()) {
        const QString name = QLatin1String(picture.name);
        if (picture.isOfSmallScreen != isSmall) {
            continue;
        }
        if (!wanted.isEmpty() && !wanted.contains(name)) {
            continue;
        }
        if (!save(picture, service,
                  folder + QLatin1Char('/') + name + suffix + QStringLiteral(".png"))) {
            std::fprintf(stderr, "%s could not be taken\n", picture.name);
            all = false;
        }
    }
    return all ? 0 : 1;
}

}  // namespace

}  // namespace quorbel

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quorbel"));
    QApplication::setApplicationVersion(QStringLiteral(QUORBEL_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    if (qEnvironmentVariable("QUORBEL_PICTURES_LANGUAGE") == u"pseudo") {
        static quorbel::testing::PseudoLanguage pseudo;
        QCoreApplication::installTranslator(&pseudo);
    } else {
        quorbel::useLanguageOf(QLocale::system());
    }
    quorbel::applyAppearance(application);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [SUFFIX [NAME...]]\n", argv[0]);
        return 2;
    }
    return quorbel::run(QApplication::arguments());
}
