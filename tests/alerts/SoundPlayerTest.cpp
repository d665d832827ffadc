#include "alerts/AlertFixture.h"
#include "alerts/PopupThread.h"
#include "alerts/SoundFiles.h"
#include "core/AppDelegate.h"
#include "platform/gui/QtText.h"
#include "platform/gui/SoundPlayer.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QApplication>
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
using testing::AlertFixture;
using testing::TemporaryFolder;
using testing::wav;

namespace {

constexpr int kPatienceMs = testing::kPatience.count();

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
             QStringLiteral("--load=module-null-sink"),
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
        QTRY_COMPARE_WITH_TIMEOUT(m_finished.size(), 1, kPatienceMs);
        QCOMPARE(m_finished.first().at(0).toString(), path);
        QVERIFY(m_finished.first().at(1).toBool());
        QVERIFY2(time.elapsed() >= 400, qPrintable(QString::number(time.elapsed())));
        QTRY_COMPARE_WITH_TIMEOUT(m_player.playing(), 0, kPatienceMs);
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

    void aSoundFileThatIsGoneKeepsNoPopupAway() {
        const QString path = write("gone.wav", wav(0.5));
        AlertFixture it;
        AppDelegate delegate;
        delegate.setAlertSettings({60, path.toStdString(), {"Alert"}, {"Alert"}});
        QVERIFY(QFile::remove(path));
        PopupThread worker(delegate, it.storyboard,
                           [this](const std::string &sound) { m_player.play(toQString(sound)); });
        worker.start();
        QTRY_VERIFY_WITH_TIMEOUT(worker.takesEvents(), kPatienceMs);
        worker.append(it.event("Local7.Alert"));
        QTRY_VERIFY_WITH_TIMEOUT(testing::shown<PopupWindow>() != nullptr, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(m_finished.size(), 1, kPatienceMs);
        QCOMPARE(m_finished.first().at(0).toString(), path);
        QCOMPARE(m_finished.first().at(1).toBool(), false);
        for (const QWidget *window : QApplication::topLevelWidgets()) {
            QVERIFY2(!window->isVisible() || dynamic_cast<const PopupWindow *>(window) != nullptr,
                     qPrintable(window->objectName()));
        }
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
        QVERIFY(time.elapsed() < kPatienceMs);
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
