#include "shell/TerminationSignals.h"

#include <QTest>

#include <csignal>

using namespace quorbel;

class TerminationSignalsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void callsBackFromTheEventLoop_data();
    void callsBackFromTheEventLoop();
    void defaultEffectIsBackAfterwards();
};

void TerminationSignalsTest::callsBackFromTheEventLoop_data() {
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TerminationSignalsTest::callsBackFromTheEventLoop() {
    QFETCH(int, signal);
    int calls = 0;
    const TerminationSignals signals([&calls] { ++calls; });
    QCOMPARE(std::raise(signal), 0);
    QCOMPARE(calls, 0);
    QTRY_COMPARE(calls, 1);
    QCOMPARE(std::raise(signal), 0);
    QTRY_COMPARE(calls, 2);
}

void TerminationSignalsTest::defaultEffectIsBackAfterwards() {
    {
        const TerminationSignals signals([] {});
    }
    struct sigaction action {};
    for (const int signal : {SIGTERM, SIGINT}) {
        sigaction(signal, nullptr, &action);
        QVERIFY(action.sa_handler == SIG_DFL);
    }
}

QTEST_GUILESS_MAIN(TerminationSignalsTest)
#include "TerminationSignalsTest.moc"
