#include "gui/SoundFiles.h"
#include "platform/gui/SoundPlayer.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QAudioDevice>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QMediaDevices>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QtEndian>

#include <sys/stat.h>

#include <cstdlib>
#include <string>
#include <utility>

namespace quorbel {

using testing::aiff;
using testing::TemporaryFolder;
using testing::wav;

namespace {

constexpr int kPatienceMs = testing::kPatience.count();
constexpr qsizetype kSamplesPerMs = 48;

/// What the sound server's device is given to play.
class Recording {
public:
    Recording() {
        m_recorder.start(QStringLiteral("parec"),
                         {QStringLiteral("--device=nobody.monitor"), QStringLiteral("--raw"),
                          QStringLiteral("--format=s16le"), QStringLiteral("--channels=1"),
                          QStringLiteral("--rate=%1").arg(kSamplesPerMs * 1000),
                          QStringLiteral("--latency-msec=20")});
    }
    ~Recording() {
        m_recorder.terminate();
        m_recorder.waitForFinished(kPatienceMs);
    }
    Recording(const Recording &) = delete;
    Recording &operator=(const Recording &) = delete;

    /// Silence is recorded, too.
    bool hasBegun() { return lengthMs() > 0; }
    qint64 lengthMs() {
        m_samples += m_recorder.readAllStandardOutput();
        return m_samples.size() / 2 / kSamplesPerMs;
    }
    /// From the first sound to the last; 0 where nothing was to be heard.
    qint64 soundMs() {
        const auto [first, end] = sound();
        return (end - first) / kSamplesPerMs;
    }
    /// Since the last sound, if there was any.
    qint64 silenceMs() {
        const qint64 length = lengthMs();
        const auto [first, end] = sound();
        return end == 0 ? 0 : length - end / kSamplesPerMs;
    }

private:
    std::pair<qsizetype, qsizetype> sound() {
        constexpr int kQuiet = 100;
        lengthMs();
        qsizetype first = 0;
        qsizetype end = 0;
        for (qsizetype i = 0; i < m_samples.size() / 2; ++i) {
            const auto sample = qFromLittleEndian<qint16>(m_samples.constData() + 2 * i);
            if (std::abs(sample) > kQuiet) {
                first = end == 0 ? i : first;
                end = i + 1;
            }
        }
        return {first, end};
    }

    QProcess m_recorder;
    QByteArray m_samples;
};

}  // namespace

class SoundPlayerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// Starts a sound server of this test's own, whose device nobody hears.
    void initTestCase() {
        const QString home = QString::fromStdString(m_folder.path().string());
        const QString address = home + QStringLiteral("/native");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home);
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        QProcess server;
        server.setProcessEnvironment(environment);
        server.setStandardOutputFile(QProcess::nullDevice());
        server.setStandardErrorFile(QProcess::nullDevice());
        server.setProgram(QStringLiteral("pulseaudio"));
        // It ends by itself once this program has gone: at its end, Qt's sound library talks with
        // it once more, and one that was ended before could leave that waiting for ever.
        server.setArguments(
            {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
             QStringLiteral("--use-pid-file=no"), QStringLiteral("--exit-idle-time=5"),
             // What it takes back to play something else is missing in the recording.
             QStringLiteral("--load=module-null-sink sink_name=nobody norewinds=1"),
             QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") +
                 address});
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(address));
        if (server.startDetached()) {
            QLocalSocket socket;
            QTRY_VERIFY_WITH_TIMEOUT(
                (socket.connectToServer(address), socket.waitForConnected(100)), kPatienceMs);
            QTRY_VERIFY_WITH_TIMEOUT(!QMediaDevices::defaultAudioOutput().isNull(), kPatienceMs);
        }
    }

    /// That the file was opened, decoded and played to its end, in about the time that it lasts.
    void playsAFileToItsEnd_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("wav") << QByteArray::fromStdString(wav(0.5));
        QTest::newRow("aiff") << QByteArray::fromStdString(aiff(0.5));
    }
    void playsAFileToItsEnd() {
        if (QMediaDevices::defaultAudioOutput().isNull()) {
            QSKIP("No sound server is installed.");
        }
        QFETCH(const QByteArray, content);
        const QString path = write("sound", content.toStdString());
        QElapsedTimer time;
        time.start();
        m_player.play(path);
        QVERIFY(m_finished.isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(m_finished.size(), 1, kPatienceMs);
        QCOMPARE(m_finished.first().at(0).toString(), path);
        QVERIFY(m_finished.first().at(1).toBool());
        QVERIFY2(time.elapsed() >= 400, qPrintable(QString::number(time.elapsed())));
        QTRY_COMPARE_WITH_TIMEOUT(m_player.playing(), 0, kPatienceMs);
    }

    void isHeardFromBeginningToEnd_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("seconds");
        QTest::newRow("60 ms") << QStringLiteral("short.wav") << 0.06;
        QTest::newRow("1 s") << QStringLiteral("usual.aiff") << 1.0;
        QTest::newRow("a name in Latin letters") << QStringLiteral("Glöckchen.wav") << 0.3;
        QTest::newRow("a name in other letters") << QStringLiteral("звонок #1%20?.aiff") << 0.3;
    }
    void isHeardFromBeginningToEnd() {
        if (QMediaDevices::defaultAudioOutput().isNull()) {
            QSKIP("No sound server is installed.");
        }
        QFETCH(const QString, name);
        QFETCH(const double, seconds);
        const std::string content =
            name.endsWith(QStringLiteral("wav")) ? wav(seconds) : aiff(seconds);
        const QString path = write(qUtf8Printable(name), content);
        Recording recording;
        QTRY_VERIFY_WITH_TIMEOUT(recording.hasBegun(), kPatienceMs);
        m_player.play(path);
        QTRY_COMPARE_WITH_TIMEOUT(m_finished.size(), 1, kPatienceMs);
        QVERIFY(m_finished.first().at(1).toBool());
        const qint64 atTheEnd = recording.lengthMs();
        QTRY_VERIFY_WITH_TIMEOUT(
            recording.silenceMs() >= 1000 || recording.lengthMs() >= atTheEnd + 3000, kPatienceMs);
        const auto wanted = static_cast<qint64>(seconds * 1000);
        // The tone's own crossings of zero, and what resampling adds.
        QVERIFY2(std::abs(recording.soundMs() - wanted) <= 5,
                 qPrintable(QString::number(recording.soundMs())));
    }

    void isSilentAboutWhatCannotBePlayed_data() {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << pathOf("missing.wav");
        QTest::newRow("empty path") << QString();
        QTest::newRow("folder") << pathOf(".");
        QTest::newRow("empty file") << write("empty.wav", "");
        QTest::newRow("no sound") << write("text.aiff", std::string(5000, 'x'));
        QTest::newRow("cut off") << write("cut.wav", wav(1).substr(0, 30));
        const QString pipe = pathOf("pipe.wav");
        mkfifo(qPrintable(pipe), S_IRUSR | S_IWUSR);
        QTest::newRow("pipe") << pipe;
    }
    void isSilentAboutWhatCannotBePlayed() {
        QFETCH(const QString, path);
        m_player.play(path);
        QTRY_COMPARE_WITH_TIMEOUT(m_finished.size(), 1, kPatienceMs);
        QCOMPARE(m_finished.first().at(1).toBool(), false);
        QTRY_COMPARE_WITH_TIMEOUT(m_player.playing(), 0, kPatienceMs);
    }

    void fallsSilentWithItsOwner() {
        if (QMediaDevices::defaultAudioOutput().isNull()) {
            QSKIP("No sound server is installed.");
        }
        Recording recording;
        QTRY_VERIFY_WITH_TIMEOUT(recording.hasBegun(), kPatienceMs);
        constexpr int kSeconds = 60;
        {
            SoundPlayer player;
            player.play(write("long.wav", wav(kSeconds)));
            QTRY_VERIFY_WITH_TIMEOUT(recording.soundMs() > 0, kPatienceMs);
        }
        QTRY_VERIFY_WITH_TIMEOUT(recording.silenceMs() >= 1000, kPatienceMs);
        // Neither the sound nor whoever ended it waited for its end.
        QVERIFY2(recording.soundMs() < kSeconds * 1000 / 2,
                 qPrintable(QString::number(recording.soundMs())));
    }

    void playsSeveralAtOnceButNotManyMore() {
        if (QMediaDevices::defaultAudioOutput().isNull()) {
            QSKIP("No sound server is installed.");
        }
        const QString path = write("long.wav", wav(60));
        for (int i = 0; i < 20; ++i) {
            m_player.play(path);
        }
        QCOMPARE(m_player.playing(), SoundPlayer::kMostAtOnce);
    }

    void cleanup() { m_finished.clear(); }

private:
    QString write(const char *name, const std::string &content) {
        return QString::fromStdString(m_folder.write(name, content).string());
    }
    QString pathOf(const char *name) {
        return QString::fromStdString((m_folder.path() / name).string());
    }

    TemporaryFolder m_folder;
    SoundPlayer m_player;
    QSignalSpy m_finished{&m_player, &SoundPlayer::finished};
};

}  // namespace quorbel

QTEST_MAIN(quorbel::SoundPlayerTest)
#include "SoundPlayerTest.moc"
