#include "alerts/SoundFiles.h"
#include "platform/gui/SoundPlayer.h"
#include "support/TemporaryFolder.h"

#include <QAudioDevice>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QMediaDevices>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <sys/stat.h>

#include <string>

namespace quorbel {

using testing::aiff;
using testing::TemporaryFolder;
using testing::wav;

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
        m_server.setProcessEnvironment(environment);
        m_server.start(
            QStringLiteral("pulseaudio"),
            {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
             QStringLiteral("--use-pid-file=no"), QStringLiteral("--exit-idle-time=-1"),
             QStringLiteral("--load=module-null-sink"),
             QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") +
                 address});
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(address));
        if (m_server.waitForStarted()) {
            QLocalSocket socket;
            QTRY_VERIFY((socket.connectToServer(address), socket.waitForConnected(100)));
            QTRY_VERIFY(!QMediaDevices::defaultAudioOutput().isNull());
        }
    }
    void cleanupTestCase() {
        m_server.terminate();
        m_server.waitForFinished();
    }

    /// That the file was opened, decoded and played to its end, in about the time that it lasts;
    /// not that it was heard.
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
        QTRY_COMPARE(m_finished.size(), 1);
        QCOMPARE(m_finished.first().at(0).toString(), path);
        QVERIFY(m_finished.first().at(1).toBool());
        QVERIFY2(time.elapsed() >= 400, qPrintable(QString::number(time.elapsed())));
        QTRY_COMPARE(m_player.playing(), 0);
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
        QElapsedTimer time;
        time.start();
        m_player.play(path);
        QVERIFY(time.elapsed() < 1000);
        QTRY_COMPARE(m_finished.size(), 1);
        QCOMPARE(m_finished.first().at(1).toBool(), false);
        QTRY_COMPARE(m_player.playing(), 0);
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

    void endsWithItsOwner() {
        if (QMediaDevices::defaultAudioOutput().isNull()) {
            QSKIP("No sound server is installed.");
        }
        QElapsedTimer time;
        time.start();
        {
            SoundPlayer player;
            player.play(write("long.wav", wav(60)));
            QCOMPARE(player.playing(), 1);
        }
        QVERIFY(time.elapsed() < 2000);
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
    QProcess m_server;
    SoundPlayer m_player;
    QSignalSpy m_finished{&m_player, &SoundPlayer::finished};
};

}  // namespace quorbel

QTEST_MAIN(quorbel::SoundPlayerTest)
#include "SoundPlayerTest.moc"
