#include "platform/gui/WindowMemory.h"
#include "support/ConfigurationFolder.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QFile>
#include <QSettings>
#include <QTest>

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

using quorbel::testing::waitUntil;

/// The disk takes its time until this is true.
std::atomic<bool> isDiskReady = true;
std::atomic<bool> wasDiskTooSlow = false;
std::atomic<bool> isDiskAsked = false;

}  // namespace

/// In place of the C library's.
extern "C" int fdatasync(int descriptor) {
    isDiskAsked = true;
    if (!waitUntil([] { return isDiskReady.load(); }, std::chrono::seconds(30))) {
        wasDiskTooSlow = true;
    }
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

namespace quorbel {

namespace {

const QString kOne = QStringLiteral("Things/one");
const QString kOther = QStringLiteral("Things/other");

QString fileIn(const testing::ConfigurationFolder &folder) {
    return QString::fromStdString((folder.path() / "QuorbelWindow.ini").string());
}

void slowTheDiskDown() {
    isDiskAsked = false;
    isDiskReady = false;
}

}  // namespace

class WindowMemoryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<testing::ConfigurationFolder>(); }
    void cleanup() {
        isDiskReady = true;
        finishRemembering();
        m_folder.reset();
        QVERIFY(!wasDiskTooSlow);
    }

    void nothingIsWrittenBeforeThereIsSomethingToRemember() {
        QCOMPARE(remembered(kOne), QVariant());
        QCOMPARE(remembered(kOne, 7), QVariant(7));
        finishRemembering();
        QVERIFY(!QFile::exists(fileIn(*m_folder)));
    }

    void whatWasGivenLastIsRemembered() {
        remember(kOne, 1);
        remember(kOne, 2);
        remember(kOther, 3);
        forget(kOther);
        QCOMPARE(remembered(kOne), QVariant(2));
        QCOMPARE(remembered(kOther, 4), QVariant(4));
        QCOMPARE(inFile(kOne), QStringLiteral("2"));
        QVERIFY(!QSettings(fileIn(*m_folder), QSettings::IniFormat).contains(kOther));
        QCOMPARE(remembered(kOne).toInt(), 2);
    }

    void theMainThreadGoesOnWhileTheDiskIsSlow() {
        remember(kOther, 5);
        finishRemembering();
        slowTheDiskDown();
        remember(kOne, 1);
        QVERIFY(waitUntil([] { return isDiskAsked.load(); }));
        QCOMPARE(remembered(kOne), QVariant(1));
        QCOMPARE(remembered(kOther).toInt(), 5);
        remember(kOther, 6);
        QCOMPARE(remembered(kOther), QVariant(6));
        QVERIFY(!isDiskReady && !wasDiskTooSlow);
        isDiskReady = true;
        QCOMPARE(inFile(kOne), QStringLiteral("1"));
        QCOMPARE(inFile(kOther), QStringLiteral("6"));
    }

    void eachConfigurationFolderHasItsOwn() {
        slowTheDiskDown();
        remember(kOther, 0);
        QVERIFY(waitUntil([] { return isDiskAsked.load(); }));
        remember(kOne, 1);
        {
            const testing::ConfigurationFolder another;
            QCOMPARE(remembered(kOne), QVariant());
            remember(kOne, 2);
            isDiskReady = true;
            finishRemembering();
            QCOMPARE(remembered(kOne).toInt(), 2);
        }
        QCOMPARE(inFile(kOne), QStringLiteral("1"));
    }

    void whatSomebodyElseWritesIsSeen() {
        remember(kOne, 1);
        finishRemembering();
        m_folder->write("QuorbelWindow.ini", "[Things]\none=nine\n");
        QCOMPARE(remembered(kOne).toString(), QStringLiteral("nine"));
    }

private:
    QString inFile(const QString &key) {
        finishRemembering();
        return QSettings(fileIn(*m_folder), QSettings::IniFormat).value(key).toString();
    }

    std::unique_ptr<testing::ConfigurationFolder> m_folder;
};

namespace {

/// Whether what is remembered last is on the disk when the application object has ended.
bool endsWithAllWritten(std::unique_ptr<QApplication> application) {
    const testing::ConfigurationFolder folder;
    slowTheDiskDown();
    remember(kOne, 1);
    remember(kOther, 2);
    std::atomic<bool> hasEnded = false;
    std::thread disk([&hasEnded] {
        waitUntil([] { return isDiskAsked.load(); });
        waitUntil([&hasEnded] { return hasEnded.load(); }, std::chrono::milliseconds(300));
        isDiskReady = true;
    });
    application.reset();
    QFile file(fileIn(folder));
    const QByteArray written = file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    hasEnded = true;
    disk.join();
    finishRemembering();
    return written.contains("one=1") && written.contains("other=2") && !wasDiskTooSlow;
}

}  // namespace

}  // namespace quorbel

int main(int argc, char **argv) {
    auto application = std::make_unique<QApplication>(argc, argv);
    quorbel::WindowMemoryTest test;
    const int failures = QTest::qExec(&test, argc, argv);
    if (!quorbel::endsWithAllWritten(std::move(application))) {
        qCritical("the end of the application leaves something unwritten");
        return 1;
    }
    return failures;
}
#include "WindowMemoryTest.moc"
