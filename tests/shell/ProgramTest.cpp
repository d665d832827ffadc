#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>

#include <sys/prctl.h>

#include <csignal>
#include <memory>

using namespace quorbel::testing;

namespace {

constexpr int kPatienceMs = 20000;

/// The real program, on the offscreen platform, with a library folder of its own.
class Program {
public:
    explicit Program(const TemporaryFolder &folder) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const QString path = QString::fromStdString(folder.path().string());
        environment.insert(QStringLiteral("QUORBEL_LIBRARY"), path);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), path);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_process.start(QStringLiteral(QUORBEL_PROGRAM), {});
        // Until then it has the signal handlers of this test.
        m_process.waitForStarted(kPatienceMs);
    }

    ~Program() {
        m_process.kill();
        m_process.waitForFinished(kPatienceMs);
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }
    bool ends() { return m_process.waitForFinished(kPatienceMs); }
    [[nodiscard]] bool endedWell() const {
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

    /// Whether the program handles the signal itself, as it does once it has started.
    [[nodiscard]] bool catches(int signal) const {
        QFile status(QStringLiteral("/proc/%1/status").arg(m_process.processId()));
        if (!status.open(QIODevice::ReadOnly)) {
            return false;
        }
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("SigCgt:")) {
                const quint64 caught = line.mid(7).trimmed().toULongLong(nullptr, 16);
                return (caught >> (signal - 1) & 1U) != 0;
            }
        }
        return false;
    }

    void send(int signal) { ::kill(static_cast<pid_t>(m_process.processId()), signal); }

private:
    QProcess m_process;
};

}  // namespace

class ProgramTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void endsCleanlyOnASignal_data();
    void endsCleanlyOnASignal();
    void secondStartLeavesItToTheFirst();
    void everyStartIsItsOwnWithoutASession();
};

void ProgramTest::endsCleanlyOnASignal_data() {
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void ProgramTest::endsCleanlyOnASignal() {
    QFETCH(int, signal);
    const PrivateBus bus(PrivateBus::Serve::kSystemAndSession);
    const TemporaryFolder folder;
    Program program(folder);
    QTRY_VERIFY_WITH_TIMEOUT(program.catches(signal), kPatienceMs);
    program.send(signal);
    QVERIFY(program.ends());
    QVERIFY(program.endedWell());
}

void ProgramTest::secondStartLeavesItToTheFirst() {
    const PrivateBus bus(PrivateBus::Serve::kSystemAndSession);
    const TemporaryFolder folder;
    Program first(folder);
    QTRY_VERIFY_WITH_TIMEOUT(first.catches(SIGTERM), kPatienceMs);
    Program second(folder);
    QVERIFY(second.ends());
    QVERIFY(second.endedWell());
    QVERIFY(first.isRunning());
}

void ProgramTest::everyStartIsItsOwnWithoutASession() {
    PrivateBus bus(PrivateBus::Serve::kSystemAndSession);
    bus.stop();
    const TemporaryFolder folder;
    Program first(folder);
    Program second(folder);
    QTRY_VERIFY_WITH_TIMEOUT(first.catches(SIGTERM) && second.catches(SIGTERM), kPatienceMs);
    QVERIFY(first.isRunning());
    QVERIFY(second.isRunning());
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
