#include "home/HomeView.h"
#include "home/ShownHomeView.h"
#include "platform/KeyedArchive.h"
#include "platform/ProcessTable.h"

#include <QProcess>
#include <QTest>

#include <filesystem>
#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;
using testing::ShownHomeView;

namespace {

/// A process with the name of the service that does nothing.
class ServiceProcess {
public:
    ServiceProcess() {
        const auto program = m_folder.path() / "QuorbelSrv";
        std::filesystem::copy_file("/bin/sleep", program);
        m_process.start(QString::fromStdString(program.string()), {"600"_L1});
        if (!m_process.waitForStarted()) {
            qFatal("cannot start %s", program.c_str());
        }
    }
    ~ServiceProcess() {
        m_process.kill();
        m_process.waitForFinished();
    }
    ServiceProcess(const ServiceProcess &) = delete;
    ServiceProcess &operator=(const ServiceProcess &) = delete;

private:
    testing::TemporaryFolder m_folder;
    QProcess m_process;
};

}  // namespace

class HomeStatusTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<ShownHomeView>(); }
    void cleanup() { m_home.reset(); }

    void theVersionIsTheProjects() {
        QCOMPARE(m_home->text("statusVersion"_L1), "Mac program " QUORBEL_VERSION ""_L1);
    }

    void settingsDecideActionsAndExport_data() {
        QTest::addColumn<std::string>("document");
        QTest::addColumn<QString>("actions");
        QTest::addColumn<QString>("exports");
        const QString noActions = "Do not use actions"_L1;
        const QString actions = "Actions enabled"_L1;
        const QString noExport = "Do not use export"_L1;
        const QString exports = "Export enabled"_L1;
        const Value record = Dictionary{{"Name", "all off"},
                                        {"Command", Dictionary{}},
                                        {"Email", Dictionary{}},
                                        {"Event", Dictionary{}}};
        row("empty document", {}, noActions, noExport);
        row("no action records", {{"actionsArray", Array{}}}, noActions, noExport);
        row("one record, all off", {{"actionsArray", Array{record}}}, actions, noExport);
        row("actions of another kind", {{"actionsArray", "text"}}, noActions, noExport);
        row("intervals 0", {{"textInterval", 0}, {"databaseInterval", 0}}, noActions, noExport);
        row("text only", {{"textInterval", 1}}, noActions, exports);
        row("text 0, database 5", {{"textInterval", 0}, {"databaseInterval", 5}}, noActions,
            exports);
        row("database 1", {{"databaseInterval", 1}}, noActions, exports);
        row("both", {{"textInterval", 10}, {"databaseInterval", 10}}, noActions, exports);
        row("locations that are kept",
            {{"textInterval", 0}, {"textLocation", "/a.txt"}, {"databaseLocation", "/a.db"}},
            noActions, noExport);
        row("negative", {{"textInterval", -1}, {"databaseInterval", -5}}, noActions, noExport);
        row("everything", {{"actionsArray", Array{record, record}}, {"textInterval", 60}}, actions,
            exports);
        QTest::newRow("damaged") << std::string("bplist00 but no more") << noActions << noExport;
        QTest::newRow("empty file") << std::string() << noActions << noExport;
        QTest::newRow("no dictionary")
            << writeKeyedArchive(Array{"actionsArray"}) << noActions << noExport;
    }
    void settingsDecideActionsAndExport() {
        QFETCH(std::string, document);
        QFETCH(QString, actions);
        QFETCH(QString, exports);
        m_home->library().write("Quorbel.ini", document);
        m_home->show();
        QCOMPARE(m_home->text("statusActions"_L1), actions);
        QCOMPARE(m_home->text("statusExport"_L1), exports);
    }

    void withoutSettingsNothingIsInUse() {
        m_home->show();
        QCOMPARE(m_home->text("statusActions"_L1), "Do not use actions"_L1);
        QCOMPARE(m_home->text("statusExport"_L1), "Do not use export"_L1);
    }

    void settingsAreReadAtEachAppearanceOnly() {
        m_home->show();
        const Dictionary settings{{"actionsArray", Array{Dictionary{}}}, {"textInterval", 5}};
        m_home->library().write("Quorbel.ini", writeKeyedArchive(settings));
        m_home->page().setEventsStatus();
        QCOMPARE(m_home->text("statusActions"_L1), "Do not use actions"_L1);
        QCOMPARE(m_home->text("statusExport"_L1), "Do not use export"_L1);
        m_home->showAgain();
        QCOMPARE(m_home->text("statusActions"_L1), "Actions enabled"_L1);
        QCOMPARE(m_home->text("statusExport"_L1), "Export enabled"_L1);
        m_home->library().write("Quorbel.ini", writeKeyedArchive(Dictionary{}));
        m_home->showAgain();
        QCOMPARE(m_home->text("statusActions"_L1), "Do not use actions"_L1);
        QCOMPARE(m_home->text("statusExport"_L1), "Do not use export"_L1);
    }

    void theMonitorStatusIsReadAtEachAppearanceOnly() {
        if (isProcessRunning("QuorbelSrv")) {
            QSKIP("a service runs on this machine");
        }
        m_home->show();
        QCOMPARE(m_home->text("statusMonitor"_L1), "Stopped"_L1);
        {
            const ServiceProcess service;
            QTRY_VERIFY(isProcessRunning("QuorbelSrv"));
            m_home->page().setEventsStatus();
            QCOMPARE(m_home->text("statusMonitor"_L1), "Stopped"_L1);
            m_home->showAgain();
            QCOMPARE(m_home->text("statusMonitor"_L1), "Running"_L1);
        }
        QCOMPARE(m_home->text("statusMonitor"_L1), "Running"_L1);
        m_home->showAgain();
        QCOMPARE(m_home->text("statusMonitor"_L1), "Stopped"_L1);
    }

private:
    static void row(const char *name, const Dictionary &settings, const QString &actions,
                    const QString &exports) {
        QTest::newRow(name) << writeKeyedArchive(settings) << actions << exports;
    }

    std::unique_ptr<ShownHomeView> m_home;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::HomeStatusTest)
#include "HomeStatusTest.moc"
