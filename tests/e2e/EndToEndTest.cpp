// The whole way of an event: a real sender, the real service on a real bus, the real program with
// its window on a display, seen over the accessibility bus and used with the pointer.

#include "e2e/RealWindow.h"
#include "load/LoadSender.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QDBusMessage>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <ctime>
#include <map>
#include <memory>

namespace quorbel {

namespace {

constexpr int kPatienceMs = testing::kPatience.count();
const QString kErrors = QStringLiteral("Error");
const QString kRating = QStringLiteral("Rating");

/// The window with what these tests look at.
struct FrontEnd : testing::RealWindow {
    using RealWindow::RealWindow;
    /// How often each message is listed.
    std::map<QString, int> messages() const {
        std::map<QString, int> counts;
        const int count = rows();
        for (int row = 0; row < count; ++row) {
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
        QVERIFY2(m_service->waitForJournal("Connected to the system bus"),
                 m_service->journal().c_str());
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
    void deleteAll(const FrontEnd &window) const {
        QVERIFY(window.press(QStringLiteral("Delete events")));
        QVERIFY(window.press(QStringLiteral("Delete all events")));
        QVERIFY(window.press(QStringLiteral("OK")));
        QVERIFY(window.press(QStringLiteral("Yes")));
        QTRY_COMPARE_WITH_TIMEOUT(window.rows(), 0, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), 0, kPatienceMs);
    }
    static bool undo(const FrontEnd &window) {
        return window.press(QStringLiteral("Edit")) && window.press(QStringLiteral("Undo Delete"));
    }
    /// The window on this desktop, once what is sent is told to it.
    std::unique_ptr<FrontEnd> openWindow() const {
        auto window = std::make_unique<FrontEnd>(
            *m_desktop, QString::fromStdString(m_library->path().string()));
        const bool hears = testing::waitUntil([this] { return someoneListens(); });
        return hears ? std::move(window) : nullptr;
    }
    /// Its count of errors, without separators.
    static QString errors(const FrontEnd &window) {
        QString text = window.homeText(kErrors);
        text.removeIf([](QChar c) { return !c.isDigit(); });
        return text;
    }
    bool someoneListens() const { return listeners() > 0; }
    /// How many have subscribed to the service's notifications, as the bus knows it.
    int listeners() const {
        const QString name = QStringLiteral("rules");
        QByteArray rules;
        {
            auto bus =
                QDBusConnection::connectToBus(QString::fromStdString(m_bus->address()), name);
            const QDBusMessage reply = bus.call(QDBusMessage::createMethodCall(
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                QStringLiteral("org.freedesktop.DBus.Debug.Stats"),
                QStringLiteral("GetAllMatchRules")));
            const auto all = qdbus_cast<QMap<QString, QStringList>>(reply.arguments().value(0));
            for (const QStringList &ofOne : all) {
                rules += ofOne.join(QLatin1Char(' ')).toUtf8();
            }
        }
        QDBusConnection::disconnectFromBus(name);
        return static_cast<int>(rules.count("member='Quorbel'"));
    }

private Q_SLOTS:
    void init() {
        m_bus = std::make_unique<testing::PrivateBus>();
        m_desktop = std::make_unique<testing::Desktop>();
        m_library = std::make_unique<testing::TemporaryFolder>();
        startService();
    }
    void cleanup() {
        m_service.reset();
        m_library.reset();
        m_desktop.reset();
        m_bus.reset();
    }

    void anEventIsOnTop() {
        const auto window = openWindow();
        QVERIFY(window);
        QCOMPARE(window->homeText(kErrors), QStringLiteral("0"));
        QCOMPARE(window->homeText(kRating),
                 QStringLiteral("No unwanted or harmful events detected."));
        log(QStringLiteral("first"));
        QTRY_COMPARE_WITH_TIMEOUT(window->homeText(kErrors), QStringLiteral("1"), kPatienceMs);
        QCOMPARE(window->homeText(kRating), QStringLiteral("Review potentialy unwanted events."));
        QVERIFY(window->press(QStringLiteral("Events")));
        const QString before = today();
        log(QStringLiteral("disk full, retrying"));
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 2, kPatienceMs);
        const QString after = today();
        QCOMPARE(window->cell(0, 0), QStringLiteral("Moderate"));
        QCOMPARE(window->cell(0, 2), QStringLiteral("Local7.Error"));
        QCOMPARE(window->cell(0, 3), QStringLiteral("127.0.0.1"));
        QCOMPARE(window->cell(0, 4), QStringLiteral("e2e: disk full, retrying"));
        const QString date = window->cell(0, 1);
        QVERIFY2(date.startsWith(before) || date.startsWith(after), qPrintable(date));
        QVERIFY(window->quit());
    }

    void aThousandEventsOverEveryTransportSurviveARestartOfBoth() {
        QStringList numbers;
        for (int i = 0; i < 1000; ++i) {
            numbers += QStringLiteral("n%1").arg(i);
        }
        const QString udp = QStringLiteral("-d");
        const QString tcp = QStringLiteral("-T");
        {
            const auto window = openWindow();
            QVERIFY(window);
            log(numbers.mid(0, 250), {udp, QStringLiteral("--rfc3164")});
            log(numbers.mid(250, 250), {udp, QStringLiteral("--rfc5424")});
            log(numbers.mid(500, 250), {tcp, QStringLiteral("--rfc3164")});
            log(numbers.mid(750, 250),
                {tcp, QStringLiteral("--rfc5424"), QStringLiteral("--octet-count")});
            QTRY_COMPARE_WITH_TIMEOUT(window->homeText(kErrors), QStringLiteral("1000"),
                                      kPatienceMs);
            QVERIFY(window->press(QStringLiteral("Events")));
            QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 1000, kPatienceMs);
            checkThatEachIsListedOnce(*window, numbers);
            QVERIFY(window->quit());
        }
        stopService();
        QCOMPARE(storedLines().size(), 1000);
        startService();
        const auto again = openWindow();
        QVERIFY(again);
        QCOMPARE(again->homeText(kErrors), QStringLiteral("1000"));
        QVERIFY(again->press(QStringLiteral("Events")));
        QTRY_COMPARE_WITH_TIMEOUT(again->rows(), 1000, kPatienceMs);
        checkThatEachIsListedOnce(*again, numbers);
        log(QStringLiteral("after"));
        QTRY_COMPARE_WITH_TIMEOUT(again->rows(), 1001, kPatienceMs);
        QCOMPARE(again->cell(0, 4), QStringLiteral("e2e: after"));
    }

    void aServiceThatComesBackIsHeardAgain() {
        const auto window = openWindow();
        QVERIFY(window);
        QVERIFY(window->press(QStringLiteral("Events")));
        log(QStringLiteral("before"));
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 1, kPatienceMs);
        m_service->kill();
        startService();
        log(QStringLiteral("after"));
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 2, kPatienceMs);
        m_bus->stop();
        m_bus->start();
        // Both come back to the bus by themselves; what is sent until then is in the files.
        int sent = 2;
        QTRY_VERIFY_WITH_TIMEOUT((log(QStringLiteral("again %1").arg(++sent)), window->rows() > 2),
                                 kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), sent, kPatienceMs);
    }

    void aWindowThatIsStoppedThroughAFloodCatchesUpAndHindersNobody() {
        constexpr std::uint64_t kFlood = 150'000;
        const auto stopped = openWindow();
        QVERIFY(stopped);
        const testing::Desktop another;
        const FrontEnd window(another, QString::fromStdString(m_library->path().string()));
        QTRY_COMPARE_WITH_TIMEOUT(listeners(), 2, kPatienceMs);
        stopped->suspend(true);
        load::Plan plan{.port = m_service->port(),
                        .transport = load::Plan::Transport::kTcp,
                        .count = kFlood,
                        .priorities = {187U}};
        QCOMPARE(load::send(plan).count, kFlood);
        QTRY_COMPARE_WITH_TIMEOUT(errors(window), QString::number(kFlood), kPatienceMs);
        // Longer than it is waited for, and told of singly.
        log({QStringLiteral("one"), QStringLiteral("two")}, {QStringLiteral("-d")});
        QTRY_COMPARE_WITH_TIMEOUT(errors(window), QString::number(kFlood + 2), kPatienceMs);
        QTest::qWait(3000);
        stopped->suspend(false);
        QTRY_COMPARE_WITH_TIMEOUT(errors(*stopped), QString::number(kFlood + 2), kPatienceMs);
        log(QStringLiteral("three"));
        for (const FrontEnd *one :
             std::initializer_list<const FrontEnd *>{stopped.get(), &window}) {
            QTRY_COMPARE_WITH_TIMEOUT(errors(*one), QString::number(kFlood + 3), kPatienceMs);
        }
    }

    void deletedEventsAreGoneFromTheFilesToo() {
        const auto window = openWindow();
        QVERIFY(window);
        QVERIFY(window->press(QStringLiteral("Events")));
        log({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")},
            {QStringLiteral("-d")});
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 3, kPatienceMs);
        int two = 0;
        while (two < 3 && window->cell(two, 4) != QStringLiteral("e2e: two")) {
            ++two;
        }
        window->clickCell(two, 4);
        QVERIFY(window->press(QStringLiteral("Delete events")));
        QVERIFY(window->press(QStringLiteral("Yes")));
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 2, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), 2, kPatienceMs);
        QVERIFY(storedLines().filter(QStringLiteral("two")).isEmpty());
        deleteAll(*window);
        QVERIFY(window->quit());
        const auto again = openWindow();
        QVERIFY(again);
        QCOMPARE(again->homeText(kErrors), QStringLiteral("0"));
    }

    void anUndoneDeletionLeavesTheFilesAsTheyWere() {
        const auto window = openWindow();
        QVERIFY(window);
        QVERIFY(window->press(QStringLiteral("Events")));
        // In this order, each of a second of its own.
        for (int number = 0; number < 3; ++number) {
            log(QStringLiteral("event %1").arg(number));
            QTRY_COMPARE_WITH_TIMEOUT(window->rows(), number + 1, kPatienceMs);
            const qint64 second = QDateTime::currentSecsSinceEpoch();
            // By the clock that is behind others, which the service asks.
            QTRY_VERIFY(std::time(nullptr) > second);
        }
        const QStringList before = storedLines();
        window->clickCell(1, 4);
        QVERIFY(window->press(QStringLiteral("Delete events")));
        QVERIFY(window->press(QStringLiteral("Yes")));
        QTRY_COMPARE_WITH_TIMEOUT(storedLines().size(), 2, kPatienceMs);
        QVERIFY(undo(*window));
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 3, kPatienceMs);
        QCOMPARE(window->cell(1, 4), QStringLiteral("e2e: event 1"));
        QTRY_COMPARE_WITH_TIMEOUT(storedLines(), before, kPatienceMs);
        deleteAll(*window);
        QCOMPARE(window->rows(), 0);
        QVERIFY(undo(*window));
        QTRY_COMPARE_WITH_TIMEOUT(storedLines(), before, kPatienceMs);
        QVERIFY(window->quit());
        const auto again = openWindow();
        QVERIFY(again);
        QCOMPARE(again->homeText(kErrors), QStringLiteral("3"));
    }

    void deletingWithAFormatThatHidesTheSecondsFindsTheLines() {
        const auto window = openWindow();
        QVERIFY(window);
        QVERIFY(window->press(QStringLiteral("Tools")));
        QVERIFY(window->press(QStringLiteral("Monitoring options")));
        QVERIFY(window->press(QStringLiteral("Show dates in a chosen format")));
        QVERIFY(window->choose(QStringLiteral("yyyy-MM-dd"), QStringLiteral("dd.MM.yyyy")));
        QVERIFY(window->choose(QStringLiteral("HH:mm:ss"), QStringLiteral("HH:mm")));
        QVERIFY(window->press(QStringLiteral("Save")));
        QTRY_VERIFY_WITH_TIMEOUT(
            QFile::exists(QString::fromStdString((m_library->path() / "Quorbel.ini").string())),
            kPatienceMs);
        QVERIFY(window->press(QStringLiteral("Events")));
        log(QStringLiteral("one"));
        QTRY_COMPARE_WITH_TIMEOUT(window->rows(), 1, kPatienceMs);
        const QString date = window->cell(0, 1);
        QVERIFY2(QDateTime::fromString(date, QStringLiteral("dd.MM.yyyy HH:mm")).isValid(),
                 qPrintable(date));
        deleteAll(*window);
    }

private:
    std::unique_ptr<testing::PrivateBus> m_bus;
    std::unique_ptr<testing::Desktop> m_desktop;
    std::unique_ptr<testing::TemporaryFolder> m_library;
    std::unique_ptr<testing::ServiceProcess> m_service;
};

}  // namespace quorbel

QTEST_GUILESS_MAIN(quorbel::EndToEndTest)
#include "EndToEndTest.moc"
