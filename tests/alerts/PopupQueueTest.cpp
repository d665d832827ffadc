#include "alerts/AlertWorker.h"
#include "platform/gui/QtText.h"

#include <QLabel>
#include <QPushButton>

#include <array>
#include <deque>
#include <random>
#include <string>

using namespace quorbel;
using namespace quorbel::testing;

namespace {

QLabel &waitingLabel() {
    return *shown<PopupWindow>()->findChild<QLabel *>(u"popupWaiting"_s);
}

QPushButton &skipButton() {
    return *shown<PopupWindow>()->findChild<QPushButton *>(u"popupSkip"_s);
}

/// As soon as its title has come up.
void clickPopup() {
    const QPointer<PopupWindow> window = shown<PopupWindow>();
    auto *title = window->findChild<QWidget *>(u"popupTitle"_s);
    [[maybe_unused]] const bool isUp =
        QTest::qWaitFor([&] { return window->height() >= title->height(); }, kPatienceMs);
    QTest::mouseClick(title, Qt::LeftButton);
}

}  // namespace

/// What waits behind a popup: how many, and skipping them.
class PopupQueueTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void cleanup() { QCOMPARE(popups(), 0); }

    void saysHowManyWaitOnlyWhileSomeDo() {
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "first");
        QCOMPARE(nextPopup(), u"first"_s);
        QVERIFY(!waitingLabel().isVisible() && !skipButton().isVisible());
        for (int i = 0; i < 1500; ++i) {
            it.append("Local7.Alert", "more");
        }
        QTRY_COMPARE_WITH_TIMEOUT(waitingLabel().text(), countText(1500) + u" more"_s, kPatienceMs);
        QVERIFY(waitingLabel().isVisible() && skipButton().isVisible());
        QCOMPARE(waitingLabel().accessibleName(), u"Waiting alerts: "_s + countText(1500));
        // Not those that the settings do not ask a popup for any more.
        it.delegate.setAlertSettings(popupsFor({"Debug"}));
        QTRY_VERIFY_WITH_TIMEOUT(!waitingLabel().isVisible(), kPatienceMs);
        QVERIFY(!skipButton().isVisible());
        closePopup();
    }

    /// Against a plain list, whatever comes and whatever is wanted.
    void countsAsAPlainListDoes() {
        constexpr std::array<const char *, 6> kNames = {"Alert",   "Warning",  "Debug",
                                                        "Nothing", "Critical", "AlertDebug"};
        std::mt19937 random(3);
        Worker it(popupsFor({"Alert", "Debug"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "up");
        QCOMPARE(nextPopup(), u"up"_s);
        std::deque<std::string> plain;
        const auto wanted = [](const std::string &priority) {
            return priority.find("Alert") != std::string::npos ||
                   priority.find("Debug") != std::string::npos;
        };
        for (int round = 0; round < 4; ++round) {
            for (unsigned i = 0; i < 5 + random() % 4; ++i) {
                plain.push_back(std::string("Local7.") + kNames[random() % kNames.size()]);
                it.append(plain.back(), std::to_string(plain.size()));
            }
            plain.push_back("Kern.Alert");
            it.append(plain.back(), "last");
            const auto count = std::ranges::count_if(plain, wanted);
            QTRY_COMPARE_WITH_TIMEOUT(waitingLabel().text(), countText(count) + u" more"_s,
                                      kPatienceMs);
            while (!wanted(plain.front())) {
                plain.pop_front();
            }
            plain.pop_front();
            const QPointer<PopupWindow> before = shown<PopupWindow>();
            clickPopup();
            QTRY_VERIFY_WITH_TIMEOUT(before.isNull() && shown<PopupWindow>() != nullptr,
                                     kPatienceMs);
        }
        closePopup();
    }

    void skipsAllThatWaitAndNoneThatComeLater_data() {
        QTest::addColumn<bool>("byKeyboard");
        QTest::newRow("clicked") << false;
        QTest::newRow("by keyboard") << true;
    }
    void skipsAllThatWaitAndNoneThatComeLater() {
        QFETCH(const bool, byKeyboard);
        Worker it({60, "/bell.wav", {"Alert"}, {"Alert"}});
        QVERIFY(it.start());
        it.append("Local7.Alert", "up");
        QCOMPARE(nextPopup(), u"up"_s);
        for (int i = 0; i < 10'000; ++i) {
            it.append("Local7.Alert", "skipped");
        }
        QTRY_VERIFY_WITH_TIMEOUT(skipButton().isVisible(), kPatienceMs);
        if (byKeyboard) {
            QTest::keyClick(shown<PopupWindow>(), Qt::Key_Escape, Qt::ShiftModifier);
        } else {
            QTest::mouseClick(&skipButton(), Qt::LeftButton);
        }
        QVERIFY(shown<PopupWindow>().isNull());
        it.append("Local7.Alert", "later");
        QCOMPARE(nextPopup(), u"later"_s);
        QVERIFY(!skipButton().isVisible());
        QCOMPARE(it.sounds.size(), std::size_t{2});
        closePopup();
    }

    void aStormIsSkippedAsAFewAre() {
        constexpr int kStorm = 300'000;
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "up");
        QCOMPARE(nextPopup(), u"up"_s);
        for (int i = 0; i < kStorm; ++i) {
            it.append("Local7.Alert", "storm");
        }
        QTRY_COMPARE_WITH_TIMEOUT(waitingLabel().text(), countText(kStorm) + u" more"_s,
                                  kPatienceMs);
        skipButton().click();
        QVERIFY(shown<PopupWindow>().isNull());
        it.append("Local7.Alert", "after the storm");
        QCOMPARE(nextPopup(), u"after the storm"_s);
        closePopup();
    }

    void whatIsLeftOfTheSkippedEndsWithTheWorker() {
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "up");
        QCOMPARE(nextPopup(), u"up"_s);
        for (int i = 0; i < 50'000; ++i) {
            it.append("Local7.Alert", "skipped");
        }
        QTest::keyClick(shown<PopupWindow>(), Qt::Key_Escape, Qt::ShiftModifier);
        it.thread.reset();
    }
};

QTEST_MAIN(PopupQueueTest)
#include "PopupQueueTest.moc"
