#include "platform/gui/ProgramEnd.h"
#include "platform/gui/ProgressWindow.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>

#include <unistd.h>

#include <array>

namespace quorbel {

class ProgressWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ProgressWindow::setPatienceMs(0); }

    // What the service tells, and a signal to end, arrive that way.
    void socketsAreServedMeanwhile() {
        std::array<int, 2> ends{};
        QCOMPARE(pipe(ends.data()), 0);
        int served = 0;
        QSocketNotifier notifier(ends[0], QSocketNotifier::Read);
        connect(&notifier, &QSocketNotifier::activated, this, [&] {
            ++served;
            notifier.setEnabled(false);
        });
        QCOMPARE(write(ends[1], "x", 1), ssize_t{1});
        ProgressWindow progress(texts(), ProgressWindow::Unit::kRows);
        // Nothing else than update() serves anything here.
        QDeadlineTimer patience(testing::kPatience);
        while (served == 0 && !patience.hasExpired()) {
            progress.update(1, 2);
        }
        QCOMPARE(served, 1);
        notifier.setEnabled(false);
        close(ends[0]);
        close(ends[1]);
    }

    void othersAreServedBeforeItAppears() {
        ProgressWindow::setPatienceMs(3'600'000);
        bool served = false;
        QTimer::singleShot(0, this, [&served] { served = true; });
        ProgressWindow progress(texts(), ProgressWindow::Unit::kRows);
        QDeadlineTimer patience(testing::kPatience);
        while (!served && !patience.hasExpired()) {
            QVERIFY(progress.update(1, 2));
        }
        QVERIFY(served);
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
        ProgressWindow::setPatienceMs(0);
    }

    void workEndsWithTheProgram_data() {
        QTest::addColumn<bool>("isOffered");
        QTest::newRow("that may be cancelled") << true;
        QTest::newRow("that may not") << false;
    }
    void workEndsWithTheProgram() {
        QFETCH(const bool, isOffered);
        ProgressWindow progress(
            texts(), ProgressWindow::Unit::kRows, nullptr,
            isOffered ? ProgressWindow::Cancel::kOffered : ProgressWindow::Cancel::kNotOffered);
        QVERIFY(progress.update(1, 3));
        endProgram();
        QVERIFY(!progress.update(2, 3));
        QVERIFY(!ProgressWindow(texts(), ProgressWindow::Unit::kRows).update(1, 3));
        // Once the loop has ended, all is as before.
        QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
        QCoreApplication::exec();
        QVERIFY(progress.update(3, 3));
    }

private:
    static ProgressWindow::Texts texts() {
        return {.title = QStringLiteral("Quorbel"),
                .work = QStringLiteral("Working"),
                .accessibleName = QStringLiteral("Done")};
    }
};

}  // namespace quorbel

int main(int argc, char **argv) {
    // GLib's event loop, where Qt has it, serves sockets even when it was told not to.
    qputenv("QT_NO_GLIB", "1");
    const QApplication application(argc, argv);
    quorbel::ProgressWindowTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ProgressWindowTest.moc"
