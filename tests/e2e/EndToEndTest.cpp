// The whole way of an event: a real sender, the real service on a real bus, the real window.

#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

#include <map>
#include <memory>

namespace quorbel {

namespace {

constexpr int kPatienceMs = testing::kPatience.count();

/// The front-end with what these tests look at.
struct FrontEnd : testing::FrontEnd {
    /// What is sent from now on is listed.
    FrontEnd() { QVERIFY(waitUntilItHears()); }
    QTableView &table() const {
        auto &page = control<QWidget>("ScanView");
        return *page.findChild<QTableView *>(QStringLiteral("tableView"));
    }
    int rows() const { return table().model()->rowCount(); }
    QString cell(int row, int column) const {
        return table().model()->index(row, column).data().toString();
    }
    QString label(const char *name) const { return control<QLabel>(name).text(); }
    void click(const char *name) const {
        QTest::mouseClick(&control<QAbstractButton>(name), Qt::LeftButton);
    }
    /// How often each message is listed.
    std::map<QString, int> messages() const {
        std::map<QString, int> counts;
        for (int row = 0; row < rows(); ++row) {
            ++counts[cell(row, 4)];
        }
        return counts;
    }
};

}  // namespace

class EndToEndTest : public QObject {
    Q_OBJECT

private:
    void startService() {
        m_service = std::make_unique<testing::ServiceProcess>(testing::ServiceProcess::Setup{
            .library = m_library->path(), .busAddress = m_bus->address()});
        QVERIFY2(m_service->isListening(), m_service->journal().c_str());
        QVERIFY2(m_service->waitForJournal("On the system bus"), m_service->journal().c_str());
    }
    void stopService() {
        QCOMPARE(m_service->terminate(), std::optional<int>(0));
        m_service.reset();
    }
    /// Sends each line as one message with util-linux's logger.
    void log(const QStringList &lines, const QStringList &options) {
        QProcess logger;
        logger.start(
            QStringLiteral("logger"),
            QStringList{QStringLiteral("-n"), QStringLiteral("127.0.0.1"), QStringLiteral("-P"),
                        QString::number(m_service->port()), QStringLiteral("-p"),
                        QStringLiteral("local7.err"), QStringLiteral("-t"), QStringLiteral("e2e")} +
                options);
        logger.write(lines.join(QLatin1Char('\n')).toUtf8() + '\n');
        logger.closeWriteChannel();
        QVERIFY2(logger.waitForFinished() && logger.exitCode() == 0,
                 logger.readAllStandardError().constData());
    }
    void log(const QString &line) { log({line}, {QStringLiteral("-d")}); }
    static QString today() {
        return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd"));
    }
    /// The lines of all log files.
    QStringList storedLines() const {
        QStringList lines;
        QDir folder(QString::fromStdString(m_library->path().string()));
        for (const QString &name : folder.entryList({QStringLiteral("*.log")}, QDir::Files)) {
            QFile file(folder.filePath(name));
            if (file.open(QIODevice::ReadOnly)) {
                lines += QString::fromUtf8(file.readAll())
                             .split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
            }
        }
        return lines;
    }
    void checkThatEachIsListedOnce(const FrontEnd &frontEnd, const QStringList &numbers) {
        const std::map<QString, int> messages = frontEnd.messages();
        QCOMPARE(messages.size(), static_cast<std::size_t>(numbers.size()));
        for (const auto &[message, count] : messages) {
            QVERIFY2(count == 1, qPrintable(message));
            QVERIFY2(numbers.contains(message.section(QLatin1Char(' '), -1)), qPrintable(message));
        }
    }
    void answer(const FrontEnd &frontEnd, const char *title, bool tick) {
        QMessageBox *box = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(
            (box = frontEnd.window->findChild<QMessageBox *>()) != nullptr && box->isVisible(),
            kPatienceMs);
        if (tick) {
            box->checkBox()->setChecked(true);
        }
        for (QAbstractButton *button : box->buttons()) {
            if (button->text() == QLatin1String(title)) {
                QTest::mouseClick(button, Qt::LeftButton);
            }
        }
        QTRY_VERIFY_WITH_TIMEOUT(!frontEnd.window->findChildren<QMessageBox *>().contains(box),
                                 kPatienceMs);
    }

private Q_SLOTS:
    void init() {
        m_bus = std::make_unique<testing::PrivateBus>();
        m_library = std::make_unique<testing::TemporaryFolder>();
        qputenv("QUORBEL_LIBRARY", m_library->path().c_str());
        startService();
    }
    void cleanup() {
        m_service.reset();
        m_library.reset();
        m_bus.reset();
    }

    void anEventIsOnTop() {
        const FrontEnd frontEnd;
        QCOMPARE(frontEnd.label("eventsError"), QStringLiteral("0"));
        QCOMPARE(frontEnd.label("eventsTitle"),
                 QStringLiteral("No unwanted or harmful events detected."));
        log(QStringLiteral("first"));
        QTRY_COMPARE_WITH_TIMEOUT(frontEnd.label("eventsError"), QStringLiteral("1"), kPatienceMs);
        QCOMPARE(frontEnd.label("eventsTitle"),
                 QStringLiteral("Review potentialy unwanted events."));
        frontEnd.click("Scan");
        const QString before = today();
        log(QStringLiteral("disk full, retrying"));
        QTRY_COMPARE_WITH_TIMEOUT(frontEnd.rows(), 2, kPatienceMs);
        const QString after = today();
        QCOMPARE(frontEnd.cell(0, 0), QStringLiteral("Moderate"));
        QCOMPARE(frontEnd.cell(0, 2), QStringLiteral("Local7.Error"));
        QCOMPARE(frontEnd.cell(0, 3), QStringLiteral("127.0.0.1"));
        QCOMPARE(frontEnd.cell(0, 4), QStringLiteral("e2e: disk full, retrying"));
        const QString date = frontEnd.cell(0, 1);
        QVERIFY2(date.startsWith(before) || date.startsWith(after), qPrintable(date));
    }

    void aThousandEventsOverEveryTransportSurviveARestartOfBoth() {
        QStringList numbers;
        for (int i = 0; i < 1000; ++i) {
            numbers += QStringLiteral("n%1").arg(i);
        }
        const QString udp = QStringLiteral("-d");
        const QString tcp = QStringLiteral("-T");
        {
            const FrontEnd frontEnd;
            frontEnd.click("Scan");
            log(numbers.mid(0, 250), {udp, QStringLiteral("--rfc3164")});
            log(numbers.mid(250, 250), {udp, QStringLiteral("--rfc5424")});
            log(numbers.mid(500, 250), {tcp, QStringLiteral("--rfc3164")});
            log(numbers.mid(750, 250),
                {tcp, QStringLiteral("--rfc5424"), QStringLiteral("--octet-count")});
            QTRY_COMPARE_WITH_TIMEOUT(frontEnd.rows(), 1000, kPatienceMs);
            checkThatEachIsListedOnce(frontEnd, numbers);
            QCOMPARE(frontEnd.delegate.state.iError, 1000);
        }
        stopService();
        QCOMPARE(storedLines().size(), 1000);
        startService();
        const FrontEnd again;
        QCOMPARE(again.rows(), 1000);
        checkThatEachIsListedOnce(again, numbers);
        QCOMPARE(again.label("eventsError"), QStringLiteral("1000"));
        log(QStringLiteral("after"));
        QTRY_COMPARE_WITH_TIMEOUT(again.rows(), 1001, kPatienceMs);
        QCOMPARE(again.cell(0, 4), QStringLiteral("e2e: after"));
    }

    void aServiceThatComesBackIsHeardAgain() {
        const FrontEnd frontEnd;
        log(QStringLiteral("before"));
        QTRY_COMPARE_WITH_TIMEOUT(frontEnd.rows(), 1, kPatienceMs);
        m_service->kill();
        startService();
        log(QStringLiteral("after"));
        QTRY_COMPARE_WITH_TIMEOUT(frontEnd.rows(), 2, kPatienceMs);
        m_bus->stop();
        m_bus->start();
        // Both come back to the bus by themselves; what is sent until then is in the files.
        int sent = 2;
        QTRY_VERIFY_WITH_TIMEOUT((log(QStringLiteral("again %1").arg(++sent)), frontEnd.rows() > 2),
                                 kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), sent, kPatienceMs);
    }

    void deletedEventsAreGoneFromTheFilesToo() {
        const FrontEnd frontEnd;
        log({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")},
            {QStringLiteral("-d")});
        QTRY_COMPARE_WITH_TIMEOUT(frontEnd.rows(), 3, kPatienceMs);
        frontEnd.click("Scan");
        QVERIFY(QTest::qWaitForWindowExposed(frontEnd.window.get()));
        int two = 0;
        while (frontEnd.cell(two, 4) != QStringLiteral("e2e: two")) {
            ++two;
        }
        QTableView &table = frontEnd.table();
        QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier,
                          table.visualRect(table.model()->index(two, 4)).center());
        frontEnd.click("deleteEvents");
        answer(frontEnd, "Yes", false);
        QCOMPARE(frontEnd.rows(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), 2, kPatienceMs);
        QVERIFY(storedLines().filter(QStringLiteral("two")).isEmpty());
        frontEnd.click("deleteEvents");
        answer(frontEnd, "OK", true);
        answer(frontEnd, "Yes", false);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), 0, kPatienceMs);
        const FrontEnd again;
        QCOMPARE(again.rows(), 0);
    }

    void deletingWithAFormatThatHidesTheSecondsFindsTheLines() {
        FrontEnd frontEnd;
        frontEnd.delegate.saveSettings({{"dateFormat", "dd.MM.yyyy HH:mm"}});
        QTRY_VERIFY_WITH_TIMEOUT(
            QFile::exists(QString::fromStdString((m_library->path() / "Quorbel.ini").string())),
            kPatienceMs);
        frontEnd.window->initializeLog();
        QCOMPARE(frontEnd.delegate.state.newDateFormat, std::string("dd.MM.yyyy HH:mm"));
        log(QStringLiteral("one"));
        QTRY_COMPARE_WITH_TIMEOUT(frontEnd.rows(), 1, kPatienceMs);
        frontEnd.click("Scan");
        frontEnd.click("deleteEvents");
        answer(frontEnd, "OK", true);
        answer(frontEnd, "Yes", false);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), 0, kPatienceMs);
    }

private:
    std::unique_ptr<testing::PrivateBus> m_bus;
    std::unique_ptr<testing::TemporaryFolder> m_library;
    std::unique_ptr<testing::ServiceProcess> m_service;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EndToEndTest)
#include "EndToEndTest.moc"
