#include "alerts/PopupView.h"
#include "alerts/PopupWindow.h"
#include "core/AppDelegate.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "shell/MainStoryboard.h"
#include "shell/WindowController.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

#include <memory>

using namespace quorbel;
using namespace quorbel::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = kPatience.count();

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
        // No settings and no stored events, and no bus.
        qputenv("QUORBEL_LIBRARY", folder.path().c_str());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + QByteArray(folder.path().c_str()) + "/x");
        AppDelegate delegate;
        Storyboard storyboard;
        fillMainStoryboard(storyboard, delegate);
        auto window = std::make_unique<WindowController>(delegate, storyboard);
        window->windowDidLoad();
        delegate.setAlertSettings({60, "", {"Warning"}, {}});

        const NotificationObserver::UserInfo userInfo{{"Type", "Set"},
                                                      {"Date", "1700000000"},
                                                      {"Priority", "Local7.Warning"},
                                                      {"Host", "10.0.0.1"},
                                                      {"Message", "link down"}};
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
};

QTEST_MAIN(ShellAlertTest)
#include "ShellAlertTest.moc"
