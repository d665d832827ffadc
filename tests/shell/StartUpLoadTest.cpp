#include "core/AlertQueueLink.h"
#include "core/EventReader.h"
#include "platform/gui/ProgressWindow.h"
#include "shell/ShellFixture.h"
#include "shell/WindowController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QTest>

#include <unistd.h>

#include <filesystem>

using namespace quorbel;
using namespace quorbel::testing;

namespace {

QWidget *progressWindow() {
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QStringLiteral("progressWindow")) {
            return window;
        }
    }
    return nullptr;
}

class CountingAlertQueue : public AlertQueueLink {
public:
    void append(Event /*event*/) override { ++appended; }

    int appended = 0;
};

/// Row after row from the top: "date|message".
QStringList rows(Shell &shell) {
    QStringList result;
    EventList &list = shell.list();
    for (std::size_t row = 0; row < list.size(); ++row) {
        result.append(QString::fromStdString(list.date(row).value_or("-") + "|" +
                                             std::string(list.message(row).value_or("-"))));
    }
    return result;
}

}  // namespace

class StartUpLoadTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyLineComesInAtTheTopUnconverted();
    void countersStartFromZero();
    void settingsReachTheState();
    void storedEventsRaiseNoAlert();
    void damagedSettingsCountAsNone();
    void startsWithoutAFolder_data();
    void startsWithoutAFolder();
    void messagesThatNobodyLooksAtArePacked();
    void progressShowsAfterAMoment();
    void progressStaysAwayFromAShortLoad();
};

void StartUpLoadTest::everyLineComesInAtTheTopUnconverted() {
    Shell shell;
    shell.library->write("2023-11-14.log",
                         "1700000000,Local7.Error,10.0.0.5,disk full, retrying\r\n"
                         "1700000001,Local7.Error,10.0.0.5\r\n"
                         "1700000002,Kern.Debug,10.0.0.6,second\r\n");
    shell.library->write("2023-11-15.log", "1700086400,Cron.Notice,10.0.0.7,third\r\n");
    shell.library->write("old.log.1", "1600000000,Cron.Notice,10.0.0.7,not read\r\n");

    shell.window.windowDidLoad();

    QCOMPARE(rows(shell),
             (QStringList{QStringLiteral("1700086400|third"), QStringLiteral("1700000002|second"),
                          QStringLiteral("1700000000|disk full, retrying")}));
    QCOMPARE(shell.events().insertedOnScreen, 0);
    QVERIFY(shell.list().image(0).empty());
    QCOMPARE(shell.home().refreshed, 0);
    QCOMPARE(shell.delegate.state.iError, 1);
    QCOMPARE(shell.delegate.state.iDebug, 1);
    QCOMPARE(shell.delegate.state.iNotice, 1);
    QCOMPARE(shell.delegate.state.iUnknown, 0);
}

void StartUpLoadTest::countersStartFromZero() {
    Shell shell;
    shell.delegate.state.iEmergency = 5;
    shell.delegate.state.iUnknown = 6;
    shell.window.windowDidLoad();
    QCOMPARE(shell.delegate.state.iEmergency, 0);
    QCOMPARE(shell.delegate.state.iUnknown, 0);
}

void StartUpLoadTest::settingsReachTheState() {
    Shell shell;
    shell.library.writeSettings({{"severityDebug", 2},
                                 {"popupEvents", 12},
                                 {"popupSound", "/sounds/bell.wav"},
                                 {"dateFormat", "dd/MM/yyyy HH:mm"},
                                 {"popupDisplayArray", Array{"Alert", "Critical"}}});
    shell.window.windowDidLoad();
    const AppState &state = shell.delegate.state;
    QCOMPARE(state.iSeverityDebug, 2);
    QCOMPARE(state.iSeverityEmergency, 0);
    QCOMPARE(state.iPopupEvents, 12);
    QCOMPARE(state.popupSound, std::string("/sounds/bell.wav"));
    QCOMPARE(state.newDateFormat, std::string("dd/MM/yyyy HH:mm"));
    QCOMPARE(state.oldDateFormat, std::string("dd/MM/yyyy HH:mm"));
    QCOMPARE(state.popupDisplayArray, (std::vector<std::string>{"Alert", "Critical"}));
    QVERIFY(state.popupPlayArray.empty());
}

void StartUpLoadTest::storedEventsRaiseNoAlert() {
    CountingAlertQueue alerts;
    Shell shell;
    shell.library.writeSettings({{"popupEvents", 12},
                                 {"popupSound", "/sounds/bell.wav"},
                                 {"popupDisplayArray", Array{"Error"}},
                                 {"popupPlayArray", Array{"Error"}}});
    shell.library->write("a.log", "1700000000,Local7.Error,10.0.0.5,stored\r\n");
    shell.window.setAlertQueue(&alerts);
    shell.window.windowDidLoad();
    QCOMPARE(rows(shell), QStringList{QStringLiteral("1700000000|stored")});
    QCOMPARE(alerts.appended, 0);
    // The same event does when it is new.
    shell.window.syslogNotify({{"Type", "Set"},
                               {"Date", "1700000000"},
                               {"Priority", "Local7.Error"},
                               {"Host", "10.0.0.5"},
                               {"Message", "stored"}});
    QCOMPARE(alerts.appended, 1);
}

void StartUpLoadTest::damagedSettingsCountAsNone() {
    Shell shell;
    shell.library->write("Quorbel.ini", "bplist00 and then nothing of the kind");
    shell.library->write("a.log", "1700000000,Local7.Error,10.0.0.5,still read\r\n");
    shell.window.windowDidLoad();
    QCOMPARE(shell.delegate.state.iSeverityEmergency, 2);
    QCOMPARE(shell.delegate.state.iSeverityError, 1);
    QCOMPARE(shell.delegate.state.iPopupEvents, 0);
    QCOMPARE(rows(shell), QStringList{QStringLiteral("1700000000|still read")});
}

void StartUpLoadTest::startsWithoutAFolder_data() {
    QTest::addColumn<bool>("missing");
    QTest::newRow("missing") << true;
    QTest::newRow("unreadable") << false;
}

void StartUpLoadTest::startsWithoutAFolder() {
    QFETCH(bool, missing);
    Shell shell;
    if (missing) {
        std::filesystem::remove_all(shell.library->path());
    } else {
        // A file in the folder's place: root, too, can list no entries of it.
        std::filesystem::remove_all(shell.library->path());
        QFile file(QString::fromStdString(shell.library->path().string()));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    shell.window.windowDidLoad();
    shell.window.makeVisible();
    QVERIFY(shell.window.isVisible());
    QCOMPARE(shell.list().size(), std::size_t{0});
    QCOMPARE(shell.delegate.state.iSeverityAlerting, 2);
}

void StartUpLoadTest::messagesThatNobodyLooksAtArePacked() {
    constexpr std::size_t kLines = 4 * EventChunk::kSlots;
    std::string log;
    for (std::size_t number = 0; number < kLines; ++number) {
        log += "1700000000,Local7.Error,10.0.0.5,message " + std::to_string(number) + "\r\n";
    }
    Shell shell;
    shell.library->write("a.log", log);
    shell.window.windowDidLoad();
    const EventReader reader(shell.list());
    QTRY_VERIFY_WITH_TIMEOUT(reader.chunk(0).isPacked() && reader.chunk(1).isPacked(), 60'000);
    QVERIFY(!reader.chunk(3).isPacked());
    QCOMPARE(shell.list().message(kLines - 1), "message 0");
}

void StartUpLoadTest::progressShowsAfterAMoment() {
    QElapsedTimer sinceStart;
    sinceStart.start();
    {
        ProgressWindow progress({}, ProgressWindow::Unit::kBytes);
        while (progressWindow() == nullptr && sinceStart.elapsed() < 10000) {
            progress.update(25, 100);
        }
        const qint64 appeared = sinceStart.elapsed();
        QVERIFY(progressWindow() != nullptr);
        QVERIFY2(appeared >= ProgressWindow::kPatienceMs, qPrintable(QString::number(appeared)));
        QVERIFY(progressWindow()->isVisible());
        const auto *bar = progressWindow()->findChild<QProgressBar *>();
        QCOMPARE(bar->value() * 4, bar->maximum());
        // More than there was at first, as when a file grows.
        while (bar->value() < bar->maximum() && sinceStart.elapsed() < 10000) {
            progress.update(200, 100);
        }
        QCOMPARE(bar->value(), bar->maximum());
    }
    QVERIFY(progressWindow() == nullptr);
}

void StartUpLoadTest::progressStaysAwayFromAShortLoad() {
    ProgressWindow progress({}, ProgressWindow::Unit::kBytes);
    progress.update(0, 0);
    progress.update(50, 100);
    progress.update(100, 100);
    QVERIFY(progressWindow() == nullptr);
}

QTEST_MAIN(StartUpLoadTest)
#include "StartUpLoadTest.moc"
#include "core/AppState.h"
