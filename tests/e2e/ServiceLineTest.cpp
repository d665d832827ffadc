// What the window says about the service, with the real one on a bus of their own.

#include "platform/KeyedArchive.h"
#include "platform/UniqueFd.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <memory>
#include <optional>

namespace quorbel {

using namespace Qt::StringLiterals;

class ServiceLineEndToEndTest : public QObject {
    Q_OBJECT

private:
    testing::PrivateBus m_bus;
    testing::TemporaryFolder m_library;
    std::unique_ptr<testing::ServiceProcess> m_service;
    std::optional<testing::FrontEnd> m_frontEnd;

    void startService() {
        m_service = std::make_unique<testing::ServiceProcess>(testing::ServiceProcess::Setup{
            .library = m_library.path(), .busAddress = m_bus.address()});
        QVERIFY2(m_service->isListening(), m_service->journal().c_str());
        QVERIFY(m_service->waitForJournal("Connected to the system bus"));
    }
    void send(std::string_view message) const {
        const UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(m_service->port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::sendto(socket.get(), message.data(), message.size(), 0,
                 reinterpret_cast<const sockaddr *>(&address), sizeof address);
    }
    /// All that the line says now, however wide the window is.
    QString told() const {
        return m_frontEnd->control<QPushButton>("serviceButton").toolTip().replace(u'\n', u'|');
    }
    bool says(const QString &part) const {
        return testing::waitUntil([&] {
            QApplication::processEvents();
            return told().contains(part);
        });
    }

private Q_SLOTS:
    void initTestCase() {
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_library.path().string()));
        applyAppearance(*qApp);
        const Dictionary filter{{"Name", "Chatter"}, {"Message", "*chatter*"}};
        m_library.write("Quorbel.ini",
                        writeKeyedArchive(Dictionary{{"excludeFiltersArray", Array{filter}}}));
        m_frontEnd.emplace();  // on a small screen, where the line is a button
    }
    void cleanupTestCase() {
        m_frontEnd.reset();
        m_service.reset();
    }

    void saysThatTheServiceDoesNotRun() {
        QVERIFY2(says("Not connected|Since "_L1), qPrintable(told()));
        QVERIFY2(told().endsWith("No event yet|The service does not run"_L1), qPrintable(told()));
    }
    void followsWhatTheServiceCounts() {
        startService();
        QVERIFY2(says("Connected|No event yet"_L1), qPrintable(told()));
        QVERIFY(m_frontEnd->waitUntilItHears());
        send("<13>an event");
        QVERIFY2(says("Last event "_L1), qPrintable(told()));
        QVERIFY(!told().contains("filtered"_L1));
        send("<13>much chatter");
        send("<13>more chatter");
        QVERIFY2(says("2 filtered"_L1), qPrintable(told()));
        QVERIFY2(told().contains("Port "_L1 + QString::number(m_service->port())),
                 qPrintable(told()));
        QVERIFY2(told().contains("listens on port 514"_L1), qPrintable(told()));
    }
    void theDetailsNameTheFilter() {
        QTest::mouseClick(&m_frontEnd->control<QPushButton>("serviceButton"), Qt::LeftButton);
        const auto *refusals = &m_frontEnd->control<RowTableView>("serviceRefusals");
        QTRY_COMPARE(refusals->model()->rowCount(), 1);
        QCOMPARE(refusals->model()->index(0, 0).data().toString(), "127.0.0.1"_L1);
        QCOMPARE(refusals->model()->index(0, 1).data().toString(),
                 "Kept out by the filter \"Chatter\""_L1);
        QCOMPARE(refusals->model()->index(0, 2).data().toString(), "2"_L1);
        const auto *counters = &m_frontEnd->control<RowTableView>("serviceCounters");
        QCOMPARE(counters->model()->index(0, 0).data().toString(), "Messages received"_L1);
        QCOMPARE(counters->model()->index(0, 1).data().toString(), "3"_L1);
        // Every counter that the service has is explained.
        for (int row = 0; row < counters->model()->rowCount(); ++row) {
            QVERIFY2(!counters->model()->index(row, 2).data().toString().isEmpty(),
                     qPrintable(counters->model()->index(row, 0).data().toString()));
        }
        QTest::mouseClick(&m_frontEnd->control<QPushButton>("serviceClose"), Qt::LeftButton);
        QTRY_VERIFY(m_frontEnd->window->findChild<QWidget *>("serviceSheet"_L1) == nullptr);
    }
    void followsTheServiceAsItGoesAndComes() {
        QCOMPARE(m_service->terminate(), std::optional<int>(0));
        m_service.reset();
        QVERIFY2(says("Not connected|Since "_L1), qPrintable(told()));
        m_frontEnd->delegate.saveSettings({});
        QVERIFY2(says("The last save was not taken"_L1), qPrintable(told()));
        startService();
        QVERIFY2(says("Connected|Last event "_L1), qPrintable(told()));
        QVERIFY(told().contains("The last save was not taken"_L1));
        m_frontEnd->delegate.saveSettings({});
        QVERIFY(testing::waitUntil([&] {
            QApplication::processEvents();
            return !told().contains("save"_L1);
        }));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ServiceLineEndToEndTest)
#include "ServiceLineTest.moc"
