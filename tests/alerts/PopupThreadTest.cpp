#include "alerts/AlertWorker.h"
#include "platform/AllocationMeter.h"
#include "platform/gui/QtText.h"
#include "platform/gui/SoundPlayer.h"
#include "support/WaitUntil.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace quorbel;
using namespace quorbel::testing;
using namespace Qt::StringLiterals;

namespace {

/// A worker that never waits for a popup: it takes an event after each of its pauses, as one would
/// that should be waiting for something else.
struct Pace : Worker {
    Pace() : Worker({0, "/bell.wav", {}, {"Warning"}}) {}

    /// How many events it has taken, not counting what the main thread has not handled.
    std::size_t taken() const { return sounds.size(); }
    /// Waits while it takes so many further events.
    bool wait(std::size_t events) {
        const std::size_t last = sounds.size() + events;
        for (std::size_t i = 0; i < events; ++i) {
            append("Local7.Warning", "pace");
        }
        return QTest::qWaitFor([this, last] { return sounds.size() == last; }, kPatienceMs);
    }
};

}  // namespace

class PopupThreadTest : public QObject {
    Q_OBJECT

private:
    static void expectNext(std::initializer_list<QString> messages) {
        for (const QString &message : messages) {
            closePopup();
            QTRY_COMPARE_WITH_TIMEOUT(popups(), 0, kPatienceMs);
            QCOMPARE(nextPopup(), message);
        }
    }

private Q_SLOTS:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    /// Nothing may be left of a worker that has ended.
    void cleanup() {
        QCOMPARE(popups(), 0);
        QVERIFY(shown<QWidget>().isNull());
    }

    void showsOnePopupAfterTheOtherInOrder() {
        Worker it({60, "/bell.wav", {"Warning"}, {"Warning"}});
        Pace pace;
        QVERIFY(it.start() && pace.start());
        for (const char *message : {"first", "second", "third"}) {
            it.append("Local7.Warning", message);
        }
        std::size_t reached = 0;
        for (const char *message : {"first", "second", "third"}) {
            QCOMPARE(nextPopup(), QString::fromLatin1(message));
            QCOMPARE(it.sounds.size(), ++reached);
            QCOMPARE(shown<PopupWindow>()->contentView().popupTime, 60);
            QVERIFY(pace.wait(3));
            QCOMPARE(popups(), 1);
            QCOMPARE(it.sounds.size(), reached);
            closePopup();
        }
        QTRY_COMPARE_WITH_TIMEOUT(popups(), 0, kPatienceMs);
        QCOMPARE(it.sounds, std::vector<std::string>(3, "/bell.wav"));
    }

    void goesOnWhenAPopupClosesByItself() {
        Worker it({1, "", {"Warning"}, {}});
        QVERIFY(it.start());
        it.append("Local7.Warning", "first");
        it.append("Local7.Warning", "second");
        QCOMPARE(nextPopup(), u"first"_s);
        QTRY_COMPARE_WITH_TIMEOUT(nextPopup(), u"second"_s, kPatienceMs);
    }

    void dropsEventsThatNothingAsksFor() {
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        const Event watched = it.event("Local7.Debug", "dropped");
        it.thread->append(watched);
        it.append("Local7.Alert", "shown");
        QCOMPARE(nextPopup(), u"shown"_s);
        QVERIFY(it.sounds.empty());
        closePopup();
    }

    void playsWithoutPopupsAndTheOtherWayRound() {
        Worker it({0, "/bell.wav", {"Alert"}, {"Alert"}});
        QVERIFY(it.start());
        it.append("Local7.Alert", "played");
        QTRY_COMPARE_WITH_TIMEOUT(it.sounds.size(), std::size_t{1}, kPatienceMs);
        it.delegate.setAlertSettings(popupsFor({"Alert"}));
        it.append("Local7.Alert", "shown");
        QCOMPARE(nextPopup(), u"shown"_s);
        QCOMPARE(it.sounds.size(), std::size_t{1});
        closePopup();
    }

    void takesAtMostOneEventInAFifthOfASecond() {
        Worker it({0, "/bell.wav", {}, {"Alert"}});
        QVERIFY(it.start());
        QElapsedTimer time;
        time.start();
        for (int i = 0; i < 5; ++i) {
            it.append("Local7.Alert", "played");
        }
        QTRY_COMPARE_WITH_TIMEOUT(it.sounds.size(), std::size_t{5}, kPatienceMs);
        QVERIFY2(time.elapsed() >= 800, qPrintable(QString::number(time.elapsed())));
    }

    void readsTheSettingsAfreshForEachEvent() {
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        for (const char *message : {"before", "after", "again"}) {
            it.append(message == std::string_view("again") ? "Local7.Debug" : "Local7.Alert",
                      message);
        }
        QCOMPARE(nextPopup(), u"before"_s);
        it.delegate.setAlertSettings({7, "", {"Debug"}, {}});
        closePopup();
        QTRY_COMPARE_WITH_TIMEOUT(popups(), 0, kPatienceMs);
        QCOMPARE(nextPopup(), u"again"_s);
        QCOMPARE(shown<PopupWindow>()->contentView().popupTime, 7);
    }

    void treatsAnEventWithoutPriorityAsUnknown() {
        Worker it(popupsFor({"Unknown"}));
        QVERIFY(it.start());
        EventFields fields;
        fields.message = "nameless";
        it.thread->append({it.list, it.list.insertRaw(fields)});
        QCOMPARE(nextPopup(), u"nameless"_s);
    }

    void dropsWhatComesBeforeItRuns() {
        Worker it(popupsFor({"Alert"}));
        it.append("Local7.Alert", "too early");
        QVERIFY(it.start());
        it.append("Local7.Alert", "in time");
        QCOMPARE(nextPopup(), u"in time"_s);
    }

    void goesOnWhereNoPopupCanBeMade() {
        Worker it({60, "/bell.wav", {"Alert"}, {"Alert"}});
        it.storyboard.add(u"popupWindow"_s, [] { return nullptr; });
        QVERIFY(it.start());
        it.append("Local7.Alert", "one");
        it.append("Local7.Alert", "two");
        QTRY_COMPARE_WITH_TIMEOUT(it.sounds.size(), std::size_t{2}, kPatienceMs);
    }

    void takesABurstWhileAPopupIsUpAndEndsAtOnce() {
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "up");
        QCOMPARE(nextPopup(), u"up"_s);
        for (int i = 0; i < 10000; ++i) {
            it.append("Local7.Alert", std::to_string(i));
        }
        QCOMPARE(popups(), 1);
        closePopup();
        QTRY_COMPARE_WITH_TIMEOUT(popups(), 0, kPatienceMs);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(nextPopup(), QString::number(i));
            closePopup();
            QTRY_COMPARE_WITH_TIMEOUT(popups(), 0, kPatienceMs);
        }
        QCOMPARE(nextPopup(), u"3"_s);
        QMetaObject::invokeMethod(&shown<PopupWindow>()->contentView(), &PopupView::popupAbout);
        QVERIFY(!shown<EventSheetStandIn>().isNull());
        // No popup ends by its time meanwhile: this is the thread that counts it.
        it.thread.reset();
        QCOMPARE(popups(), 0);
        QVERIFY(shown<EventSheetStandIn>().isNull());
    }

    void aMillionWaitInTheirOrderAndTakeLittleMemory() {
        constexpr std::size_t kMany = 1'000'000;
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "up");
        QCOMPARE(nextPopup(), u"up"_s);
        std::vector<EventId> ids;
        ids.reserve(kMany);
        for (std::size_t i = 0; i < kMany; ++i) {
            ids.push_back(it.event("Local7.Informational.Alert", std::to_string(i)).id());
        }
        const AllocationMeter meter;
        for (const EventId id : ids) {
            it.thread->append({it.list, id});
        }
        const std::size_t bytesEach = meter.peak() / kMany;
        QVERIFY2(bytesEach <= 40, qPrintable(QString::number(bytesEach)));
        expectNext({u"0"_s, u"1"_s});
        // As when the log is read anew.
        const AllocationMeter leaving;
        it.list.removeRows({{0, it.list.size()}});
        const std::size_t bytesLeft = leaving.peak() / kMany;
        QVERIFY2(bytesLeft <= 40, qPrintable(QString::number(bytesLeft)));
        expectNext({u"2"_s, u"3"_s});
    }

    void endsAmidAPause() {
        constexpr std::size_t kWorkers = 40;
        std::vector<std::unique_ptr<Worker>> workers;
        for (std::size_t i = 0; i < kWorkers; ++i) {
            workers.push_back(std::make_unique<Worker>(popupsFor({"Alert"})));
            QVERIFY(workers.back()->start());
        }
        Pace pace;
        QVERIFY(pace.start());
        for (std::size_t i = 0; i < 2 * kWorkers; ++i) {
            pace.append("Local7.Warning", "pace");
        }
        QTRY_COMPARE_GT_WITH_TIMEOUT(pace.taken(), std::size_t{0}, kPatienceMs);
        const std::size_t before = pace.taken();
        workers.clear();  // one after the other; on average they are half through a pause
        QCoreApplication::processEvents();
        const std::size_t pauses = pace.taken() - before;
        QVERIFY2(pauses < kWorkers / 4, qPrintable(QString::number(pauses)));
    }

    void aSoundFileThatIsGoneKeepsNoPopupAway() {
        const TemporaryFolder folder;
        const std::string path = (folder.path() / "gone.wav").string();
        AlertFixture it;
        AppDelegate delegate;
        delegate.setAlertSettings({60, path, {"Alert"}, {"Alert"}});
        SoundPlayer player;
        const QSignalSpy finished(&player, &SoundPlayer::finished);
        PopupThread worker(delegate, it.storyboard,
                           [&](const std::string &sound) { player.play(toQString(sound)); });
        worker.start();
        QTRY_VERIFY_WITH_TIMEOUT(worker.takesEvents(), kPatienceMs);
        worker.append(it.event("Local7.Alert"));
        QTRY_VERIFY_WITH_TIMEOUT(shown<PopupWindow>() != nullptr, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(finished.first().at(0).toString(), toQString(path));
        QCOMPARE(finished.first().at(1).toBool(), false);
        for (const QWidget *window : QApplication::topLevelWidgets()) {
            QVERIFY2(!window->isVisible() || dynamic_cast<const PopupWindow *>(window) != nullptr,
                     qPrintable(window->objectName()));
        }
        shown<PopupWindow>()->close();
    }

    void endsBeforeItHasBegun() {
        {
            Worker neverStarted(popupsFor({"Alert"}));
            neverStarted.append("Local7.Alert", "x");
        }
        for (int i = 0; i < 20; ++i) {
            Worker it(popupsFor({"Alert"}));
            it.thread->start();
            it.append("Local7.Alert", "x");
        }
    }

    void endsWhileItAsksForAPopup() {
        std::array<std::optional<Worker>, 10> workers;
        for (auto &worker : workers) {
            worker.emplace(popupsFor({"Alert"}));
            QVERIFY(worker->start());
        }
        for (auto &worker : workers) {
            worker->append("Local7.Alert", "x");
        }
        // Only the main thread could tell that it is asked, and it would answer. Most of them have
        // asked after twice their pause, also on a busy machine.
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }

    void endsWhileItWaitsForAPopup() {
        Worker it(popupsFor({"Alert"}));
        QVERIFY(it.start());
        it.append("Local7.Alert", "x");
        it.append("Local7.Alert", "y");
        QCOMPARE(nextPopup(), u"x"_s);
    }
};

QTEST_MAIN(PopupThreadTest)
#include "PopupThreadTest.moc"
#include "core/AppState.h"
