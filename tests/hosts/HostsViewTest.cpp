#include "HostTraffic.h"
#include "core/HostPattern.h"
#include "hosts/HostPulse.h"
#include "hosts/HostTableModel.h"
#include "hosts/HostsView.h"
#include "hosts/RetiredHosts.h"
#include "platform/gui/RowTableView.h"
#include "platform/gui/WindowMemory.h"
#include "support/ConfigurationFolder.h"
#include "support/Seed.h"
#include "support/WindowStandIn.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include <random>

namespace quorbel {

using testing::HostTraffic;
using Column = HostTableModel::Column;

class HostsViewTest : public QObject {
    Q_OBJECT

private:
    static constexpr std::int64_t kNow = HostTraffic::kNow;
    static constexpr std::int64_t kMinute = HostTraffic::kMinute;
    static constexpr std::int64_t kHour = HostTraffic::kHour;
    static constexpr std::int64_t kDay = HostTraffic::kDay;

    template <class Control>
    Control &control(const char *name) {
        return *m_page->findChild<Control *>(QLatin1String(name));
    }
    RowTableView &table() { return control<RowTableView>("hostTable"); }
    QString cell(int row, int column) {
        return table().model()->index(row, column).data().toString();
    }
    int rowOf(const char *host) {
        for (int row = 0; row < table().model()->rowCount(); ++row) {
            if (cell(row, Column::kHost) == QLatin1String(host)) {
                return row;
            }
        }
        return -1;
    }
    QStringList names() {
        QStringList names;
        for (int row = 0; row < table().model()->rowCount(); ++row) {
            names.append(cell(row, Column::kHost));
        }
        return names;
    }
    void makePage() {
        m_page = std::make_unique<HostsView>(*m_delegate);
        m_page->pulse().setClock([this] { return m_now; });
        m_page->viewDidLoad();
        m_page->resize(1000, 600);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
        wait();
    }
    void wait() {
        int beats = 0;
        const auto connection = QObject::connect(&m_page->pulse(), &HostPulse::beat, m_page.get(),
                                                 [&beats] { ++beats; });
        QTRY_VERIFY(beats > 0);
        QObject::disconnect(connection);
    }
    /// Three that are on time, one that is not, one that is irregular, and one that is new.
    void showUsualHosts() {
        m_traffic.add("often", 14 * kDay, 0, 60);
        m_traffic.add("seldom", 14 * kDay - 30, 0, kHour);
        m_traffic.add("severe", 14 * kDay - 10, 0, 300, 2);
        m_traffic.add("gone", 14 * kDay - 20, 7 * kHour + 18 * kMinute, 300);
        for (const int day : {13, 12, 9, 6, 5, 1}) {
            m_traffic.add("irregular", day * kDay + 40, day * kDay, 60);
        }
        m_traffic.add("new", 60, 0, 60);
        m_traffic.arriveAt(*m_delegate);
        makePage();
    }
    void select(const char *host) {
        const QModelIndex index = table().model()->index(rowOf(host), Column::kHost);
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {},
                          table().visualRect(index).center());
    }

    /// Each host has a row that says what was handed over last.
    static void checkRows(const HostTableModel &model, const std::vector<HostRow> &rows) {
        for (const HostRow &row : rows) {
            int found = 0;
            for (int i = 0; i < model.rowCount(); ++i) {
                found += model.row(i) == row ? 1 : 0;
            }
            QCOMPARE(found, 1);
        }
    }

    std::unique_ptr<testing::ConfigurationFolder> m_configuration;
    testing::WindowStandIn m_main;
    std::unique_ptr<AppDelegate> m_delegate;
    HostTraffic m_traffic;
    std::int64_t m_now = kNow;
    std::unique_ptr<HostsView> m_page;

private Q_SLOTS:
    void init() {
        finishRemembering();
        m_configuration = std::make_unique<testing::ConfigurationFolder>();
        m_delegate = std::make_unique<AppDelegate>();
        for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
            m_delegate->state.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
        }
        m_main = {};
        m_delegate->setMainWindow(&m_main);
        m_now = kNow;
    }
    void cleanup() {
        m_page.reset();
        m_delegate.reset();
    }

    void saysWhenThereIsNothing() {
        makePage();
        QCOMPARE(table().model()->rowCount(), 0);
        QCOMPARE(table().hint(), QStringLiteral("No host has sent anything yet."));
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("0 hosts"));
        QVERIFY(!control<QPushButton>("hostEvents").isEnabled());
        QVERIFY(!control<QPushButton>("hostExpected").isEnabled());
    }

    void overdueStandFirstThenTheLongestSilent() {
        showUsualHosts();
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("6 hosts, 1 overdue"));
        QCOMPARE(names(), QStringList({u"gone"_qs, u"irregular"_qs, u"seldom"_qs, u"severe"_qs,
                                       u"often"_qs, u"new"_qs}));
        QVERIFY(table().model()->index(0, 0).data(Qt::FontRole).value<QFont>().bold());
        QVERIFY(!table().model()->index(1, 0).data(Qt::FontRole).value<QFont>().bold());
        QVERIFY(table()
                    .model()
                    ->index(0, Column::kSilent)
                    .data(Qt::AccessibleTextRole)
                    .toString()
                    .endsWith(u", overdue"));
    }

    void saysWhatIsKnownOfAHost() {
        showUsualHosts();
        const int gone = rowOf("gone");
        QCOMPARE(cell(gone, Column::kFirst), QStringLiteral("2025-12-22"));
        QCOMPARE(cell(gone, Column::kLast), QStringLiteral("2026-01-05 04:40:20"));
        QCOMPARE(cell(gone, Column::kToday), QStringLiteral("57"));
        QCOMPARE(cell(gone, Column::kMean), QStringLiteral("288"));
        QCOMPARE(cell(gone, Column::kSevereShare), QStringLiteral("0 %"));
        QCOMPARE(cell(gone, Column::kGap), QStringLiteral("5 min"));
        QCOMPARE(cell(gone, Column::kSilent), QStringLiteral("7 h 19 min"));
        QCOMPARE(cell(rowOf("severe"), Column::kSevereShare), QStringLiteral("100 %"));
        QCOMPARE(cell(rowOf("seldom"), Column::kGap), QStringLiteral("1 h"));
        QCOMPARE(cell(rowOf("irregular"), Column::kGap), QStringLiteral("irregular"));
        QCOMPARE(cell(rowOf("new"), Column::kGap), QStringLiteral("learning"));
        QCOMPARE(cell(rowOf("new"), Column::kMean), QStringLiteral("—"));
        QCOMPARE(cell(rowOf("new"), Column::kSilent), QStringLiteral("1 min"));
    }

    void aSingleHostIsNoPlural() {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("QString::arg")));
        m_traffic.add("only", 14 * kDay, 0, 60);
        m_traffic.arriveAt(*m_delegate);
        makePage();
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("1 host"));
        for (int minute = 1; minute <= 20; ++minute) {  // from somebody, or nobody was heard
            HostTraffic::arrive(*m_delegate, {}, kNow + minute * kMinute);
        }
        m_now = kNow + 20 * kMinute;
        wait();
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("1 host, 1 overdue"));
    }

    void datesAreShownAsTheEventsPageDoes() {
        m_delegate->state.newDateFormat = "dd.MM.yy HH:mm";
        showUsualHosts();
        QCOMPARE(cell(rowOf("gone"), Column::kLast), QStringLiteral("05.01.26 04:40"));
        QCOMPARE(cell(rowOf("gone"), Column::kFirst), QStringLiteral("22.12.25"));
    }

    void headerSorts() {
        showUsualHosts();
        QHeaderView &header = *table().horizontalHeader();
        const auto clickTitle = [&header](int column) {
            QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                              QPoint(header.sectionViewportPosition(column) + 20, 10));
        };
        clickTitle(Column::kHost);
        QStringList sorted = names();
        std::ranges::sort(sorted);
        QCOMPARE(names(), sorted);
        clickTitle(Column::kHost);
        std::ranges::reverse(sorted);
        QCOMPARE(names(), sorted);
        clickTitle(Column::kToday);
        clickTitle(Column::kToday);
        QCOMPARE(names().first(), QStringLiteral("often"));
    }

    void choosingAHostAsksForItsEvents() {
        showUsualHosts();
        select("gone");
        QVERIFY(m_main.asked.empty());
        QTest::keyClick(&table(), Qt::Key_Return);
        QCOMPARE(m_main.asked.size(), 1U);
        QTest::mouseClick(&control<QPushButton>("hostEvents"), Qt::LeftButton);
        QCOMPARE(m_main.asked.size(), 2U);
        const QPoint place =
            table().visualRect(table().model()->index(rowOf("gone"), Column::kLast)).center();
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(m_main.asked.size(), 3U);
        for (const EventQuery &query : m_main.asked) {
            QCOMPARE(query.host, std::string("gone"));
        }
    }

    // Hosts may be called anything, as senders choose their names.
    void onlyTheEventsOfThatVeryHostAreAskedFor() {
        const std::vector<std::string> hosts{
            "*",    "?",       "!",          ",",        "\"",   "a*b",  "axb", "a,b",
            "!axb", "\"a*b\"", "10.0.0.0/8", "10.0.0.1", "FW01", "fw01", "x=y", "::ffff:10.0.0.1"};
        for (const std::string &host : hosts) {
            m_traffic.add(host, kHour, 0, kDay);
        }
        m_traffic.arriveAt(*m_delegate);
        makePage();
        for (const std::string &host : hosts) {
            select(host.c_str());
            QTest::keyClick(&table(), Qt::Key_Return);
            const HostPattern pattern(m_main.asked.back().host);
            for (const std::string &other : hosts) {
                QVERIFY2(pattern.matches(other) == (other == host), (host + ' ' + other).c_str());
            }
        }
    }

    void tellsTheHabitOfTheSelectedHost() {
        showUsualHosts();
        QCOMPARE(control<QLabel>("hostHabit").text(), QString());
        select("gone");
        QVERIFY(control<QLabel>("hostHabit")
                    .text()
                    .startsWith(u"Usually every 5 min, by day and by night."));
        select("new");
        QCOMPARE(control<QLabel>("hostHabit").text(),
                 QStringLiteral("Not known for long enough to say what is usual."));
    }

    void followsWhatArrives() {
        showUsualHosts();
        select("gone");
        HostTraffic::arrive(*m_delegate, "gone", kNow);
        HostTraffic::arrive(*m_delegate, "newest", kNow);
        wait();
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("7 hosts"));
        QCOMPARE(cell(rowOf("gone"), Column::kSilent), QStringLiteral("under 1 min"));
        QVERIFY(rowOf("gone") > 0);
        QVERIFY(table().selectionModel()->isRowSelected(rowOf("gone")));
        QCOMPARE(table().selectionModel()->selectedRows().size(), 1);
    }

    // To follow thousands of selected rows would hold the window up each second.
    void rowsStayWhileVeryManyAreSelected() {
        for (int host = 0; host < 150; ++host) {
            m_traffic.add("host-" + std::to_string(host), kHour + host * kMinute, 0, kDay);
        }
        m_traffic.arriveAt(*m_delegate);
        makePage();
        QCOMPARE(rowOf("host-0"), 149);
        table().selectAll();
        HostTraffic::arrive(*m_delegate, "host-149", kNow);
        HostTraffic::arrive(*m_delegate, "newest", kNow);
        wait();
        QCOMPARE(rowOf("host-149"), 0);
        QCOMPARE(cell(0, Column::kSilent), QStringLiteral("under 1 min"));
        QCOMPARE(rowOf("newest"), 150);
        QCOMPARE(table().selectionModel()->selectedRows().size(), 150);
        table().clearSelection();
        wait();
        QCOMPARE(rowOf("host-148"), 0);
        QVERIFY(rowOf("host-149") > 148);
    }

    void hostThatIsNotExpectedIsNotOverdueAndRemembered() {
        showUsualHosts();
        select("gone");
        auto &button = control<QPushButton>("hostExpected");
        QCOMPARE(button.text(), QStringLiteral("Stop expecting"));
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(button.text(), QStringLiteral("Expect again"));
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("6 hosts"));
        QCOMPARE(cell(rowOf("gone"), Column::kGap), QStringLiteral("not expected"));

        m_delegate->hosts.setRetired({});
        makePage();
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("6 hosts"));
        select("gone");
        QTest::mouseClick(&control<QPushButton>("hostExpected"), Qt::LeftButton);
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("6 hosts, 1 overdue"));
        makePage();
        QCOMPARE(control<QLabel>("hostSummary").text(), QStringLiteral("6 hosts, 1 overdue"));
    }

    void anyNameIsRemembered_data() {
        QTest::addColumn<QStringList>("names");
        for (const char *name :
             {"*", ",", "\"", "=", ";", "[x]", "@Invalid()", "%1", " a ", "a, b", "\\", "\xD7\xA9",
              "\xEF\xBB\xBF"
              "a",
              "ctl\x01\x1b"}) {
            QTest::newRow(name) << QStringList(QString::fromUtf8(name));
        }
        QTest::newRow("several") << QStringList({u"*"_qs, u","_qs, u"\""_qs, u"="_qs, u"a, b"_qs});
    }
    void anyNameIsRemembered() {
        QFETCH(QStringList, names);
        HostWatch::Names retired;
        for (const QString &name : names) {
            retired.insert(name.toStdString());
        }
        rememberRetiredHosts(retired);
        QVERIFY(rememberedRetiredHosts() == retired);
        rememberRetiredHosts({});
        QVERIFY(rememberedRetiredHosts().empty());
    }

    void copiesRowsAndNames() {
        showUsualHosts();
        select("gone");
        QTest::keyClick(&table(), Qt::Key_C, Qt::ControlModifier);
        QVERIFY(QApplication::clipboard()->text().startsWith(u"gone\t2025-12-22\t2026"));
        QTest::keyClick(&table(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("gone"));
    }

    void doneGoesBackToWhereItWasOpened() {
        makePage();
        m_page->parentTab = Tab::kHome;
        QTest::mouseClick(&control<QPushButton>("hostsDone"), Qt::LeftButton);
        QVERIFY(m_main.selected == std::vector({Tab::kHome}));
    }

    // Rows come, go and move; who is selected stays so.
    void modelKeepsItsPromises() {
        std::mt19937 random(testing::seed());
        const auto pick = [&random](int count) {
            return std::uniform_int_distribution<int>(0, count - 1)(random);
        };
        HostTableModel model;
        const QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (int round = 0; round < 300; ++round) {
            const int watched = model.rowCount() > 0 ? pick(model.rowCount()) : -1;
            const QPersistentModelIndex index(watched < 0 ? QModelIndex()
                                                          : model.index(watched, 0));
            const QString name = index.data().toString();
            std::vector<HostRow> rows;
            bool isThere = false;
            for (int host = 0; host < 100; ++host) {
                if (pick(10) != 0 && (round % 50 != 0 || host > 60)) {
                    rows.push_back({.name = QString::number(host), .silentFor = pick(500)});
                    isThere = isThere || rows.back().name == name;
                }
            }
            if (pick(10) == 0) {
                std::ranges::shuffle(rows, random);
            }
            model.setOrderKept(pick(10) == 0);
            model.setRows(rows);
            QCOMPARE(model.rowCount(), static_cast<int>(rows.size()));
            checkRows(model, rows);
            if (index.isValid()) {
                QCOMPARE(index.data().toString(), name);
                QVERIFY(isThere);
            }
            if (pick(20) == 0) {
                model.sort(pick(HostTableModel::kColumnCount),
                           pick(2) == 0 ? Qt::AscendingOrder : Qt::DescendingOrder);
            }
        }
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::HostsViewTest)
#include "HostsViewTest.moc"
