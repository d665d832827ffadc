#include "soak/StallWatch.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QTest>

#include <chrono>
#include <thread>

namespace quorbel::soak {

class StallWatchTest : public QObject {
    Q_OBJECT

private:
    static void goOnFor(std::chrono::milliseconds time) {
        testing::waitUntil(
            [] {
                QApplication::processEvents();
                return false;
            },
            time);
    }
    static void work(std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
        }
    }

private Q_SLOTS:
    void whoWorksStandsStill() {
        StallWatch watch;
        goOnFor(std::chrono::milliseconds(50));
        watch.setDoing(QStringLiteral("works"));
        work(std::chrono::milliseconds(300));
        goOnFor(std::chrono::milliseconds(50));
        watch.setDoing(QStringLiteral("rests"));
        const StallWatch::Stall &longest = watch.longest().front();
        QCOMPARE(longest.doing, QStringLiteral("works"));
        QVERIFY(longest.processor > 20);
        QVERIFY(longest.milliseconds >= longest.processor);
        QVERIFY(!longest.calls.empty());
    }
    void soDoesWhoWaits() {
        StallWatch watch;
        goOnFor(std::chrono::milliseconds(50));
        watch.setDoing(QStringLiteral("waits"));
        std::this_thread::sleep_for(std::chrono::seconds(2));
        goOnFor(std::chrono::milliseconds(50));
        const StallWatch::Stall &longest = watch.longest().front();
        QCOMPARE(longest.doing, QStringLiteral("waits"));
        QVERIFY(longest.milliseconds > 200);
        QVERIFY(longest.processor < longest.milliseconds);
    }
    void whatComesWhileItIsStoppedDoesNotCount() {
        StallWatch watch;
        watch.stop();
        watch.setDoing(QStringLiteral("compares"));
        work(std::chrono::milliseconds(100));
        watch.start();
        watch.setDoing(QStringLiteral("goes on"));
        goOnFor(std::chrono::milliseconds(50));
        for (const StallWatch::Stall &stall : watch.longest()) {
            QCOMPARE(stall.doing, QStringLiteral("goes on"));
        }
    }
};

}  // namespace quorbel::soak

QTEST_MAIN(quorbel::soak::StallWatchTest)
#include "StallWatchTest.moc"
