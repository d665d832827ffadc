#include "alerts/PopupView.h"
#include "alerts/PopupWindow.h"
#include "core/AppDelegate.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "shell/MainStoryboard.h"
#include "shell/WindowController.h"
#include "support/FrontEnd.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTableView>
#include <QTest>

#include <memory>

using namespace quorbel;
using namespace quorbel::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = kPatience.count();

/// No settings and no stored events, and no bus.
void isolate(const TemporaryFolder &folder) {
    qputenv("QUORBEL_LIBRARY", folder.path().c_str());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + QByteArray(folder.path().c_str()) + "/x");
}

NotificationObserver::UserInfo warning(const char *message) {
    return {{"Type", "Set"},
            {"Date", "1700000000"},
            {"Priority", "Local7.Warning"},
            {"Host", "10.0.0.1"},
            {"Message", message}};
}

EventFields fieldsOf(const NotificationObserver::UserInfo &userInfo) {
    return {userInfo[1].second, userInfo[2].second, userInfo[3].second, userInfo[4].second, {}};
}

QWidget *shownWindow(const char *name) {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1StringView(name) && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

}  // namespace

/// The main window with its real pages, from a notification to the popup.
class ShellAlertTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }

    void raisesAPopupWhoseLinkOpensTheEvent() {
        const TemporaryFolder folder;
        isolate(folder);
        AppDelegate delegate;
        Storyboard storyboard;
        fillMainStoryboard(storyboard, delegate);
        auto window = std::make_unique<WindowController>(delegate, storyboard);
        window->windowDidLoad();
        delegate.setAlertSettings({60, "", {"Warning"}, {}});

        const NotificationObserver::UserInfo userInfo = warning("link down");
        // The worker needs a moment until it takes events.
        QTRY_VERIFY_WITH_TIMEOUT(
            (window->syslogNotify(userInfo), shownWindow("popupWindow") != nullptr), kPatienceMs);
        QWidget *popup = shownWindow("popupWindow");
        QVERIFY(popup->findChild<QPlainTextEdit *>(u"popupDetails"_s)
                    ->toPlainText()
                    .endsWith("link down"_L1));

        popup->findChild<PopupView *>()->popupAbout();
        const QWidget *sheet = shownWindow("eventView");
        QVERIFY(sheet != nullptr);
        QCOMPARE(sheet->findChild<QPlainTextEdit *>(u"eventMessage"_s)->toPlainText(),
                 u"link down"_s);
        QCOMPARE(sheet->findChild<QLineEdit *>(u"eventDate"_s)->text(), u"1700000000"_s);
        QCOMPARE(sheet->findChild<QLineEdit *>(u"eventPriority"_s)->text(), u"Local7.Warning"_s);
        QCOMPARE(sheet->findChild<QLineEdit *>(u"eventHost"_s)->text(), u"10.0.0.1"_s);
        QVERIFY(!sheet->findChild<QWidget *>(u"eventUp"_s)->isVisible());
        QVERIFY(!sheet->findChild<QWidget *>(u"eventDown"_s)->isVisible());

        // Ended with a popup, a sheet and further events. The popup's time cannot run out
        // meanwhile: this is the thread that counts it.
        window.reset();
        QVERIFY(shownWindow("popupWindow") == nullptr);
        QVERIFY(shownWindow("eventView") == nullptr);
    }

    /// Of each kind one holds an event when the program ends: the popup, its sheet, the page's
    /// sheet, and what waits in the queue. The events come to their end last of all.
    void endsWithAllThatHoldsAnEvent() {
        const TemporaryFolder folder;
        isolate(folder);
        FrontEnd it;
        it.window->setReopenable([] { return true; });
        it.delegate.setAlertSettings({60, "", {"Warning"}, {}});
        NotificationObserver::UserInfo userInfo = warning("link down");
        QTRY_VERIFY_WITH_TIMEOUT(
            (it.window->syslogNotify(userInfo), shownWindow("popupWindow") != nullptr),
            kPatienceMs);

        it.window->Scan();
        auto *table = it.control<QWidget>("ScanView").findChild<QTableView *>();
        const auto row = [table] { return table->visualRect(table->model()->index(0, 4)); };
        QTRY_VERIFY_WITH_TIMEOUT(table->viewport()->rect().contains(row().center()), kPatienceMs);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, row().center());
        QTRY_VERIFY_WITH_TIMEOUT(table->selectionModel()->hasSelection(), kPatienceMs);
        QTest::keyClick(table, Qt::Key_Return);
        QPointer<QWidget> pageSheet = shownWindow("eventView");
        QVERIFY(!pageSheet.isNull());
        it.window->syslogNotify(warning("waits"));

        // The popup's link is followed when its event has left the list and the window is closed.
        userInfo.front().second = "Remove";
        while (it.delegate.events.find(fieldsOf(userInfo), it.delegate.state.newDateFormat)) {
            it.window->syslogNotify(userInfo);
        }
        QTRY_COMPARE_WITH_TIMEOUT(it.delegate.events.size(), std::size_t{1}, kPatienceMs);
        it.window->close();
        QVERIFY(!it.window->isVisible());
        shownWindow("popupWindow")->findChild<PopupView *>()->popupAbout();
        QPointer<QWidget> popupSheet;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == "eventView"_L1 && widget != pageSheet) {
                popupSheet = widget;
            }
        }
        QVERIFY(!popupSheet.isNull() && popupSheet->isVisible());
        QCOMPARE(popupSheet->findChild<QPlainTextEdit *>(u"eventMessage"_s)->toPlainText(),
                 u"link down"_s);
        QVERIFY(!pageSheet.isNull());

        it.window.reset();
        QVERIFY(pageSheet.isNull());
        QVERIFY(popupSheet.isNull());
        QVERIFY(shownWindow("popupWindow") == nullptr);
        QCOMPARE(it.delegate.events.size(), std::size_t{1});
    }
};

QTEST_MAIN(ShellAlertTest)
#include "ShellAlertTest.moc"
