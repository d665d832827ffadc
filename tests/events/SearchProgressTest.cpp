// What is said of a search while it goes on, and what is shown meanwhile.

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/EventList.h"
#include "events/EventFinder.h"
#include "events/EventTableModel.h"
#include "events/EventTableView.h"
#include "events/FindBar.h"
#include "support/ConfigurationFolder.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace quorbel {

using namespace testing;

class SearchProgressTest : public QObject {
    Q_OBJECT

private:
    static constexpr int kEvents = 20'000;  // more than the first runs of a search look at

    /// The bar above a table, as on the page.
    struct Window {
        ConfigurationFolder configuration;
        EventList list;
        AppState state;
        ArrangedEvents events{list};
        EventTableModel model{events};
        QWidget page;
        FindBar bar{&page};
        QPushButton unfold{&page};
        EventTableView table{&page};
        std::unique_ptr<EventFinder> finder;
        QStringList told;

        explicit Window(const EventFinder::Pace &pace) {
            for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
                state.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
            }
            for (int i = 0; i < kEvents; ++i) {
                list.insertRaw({"1700000000",
                                i % 2 == 0 ? "Kern.Critical" : "Kern.Debug",
                                "fs01",
                                i % 10 == 0 ? "disk sdb1 failed" : "link up",
                                {}});
            }
            list.show(state);
            table.setModel(&model);
            bar.attach(list, unfold);
            finder = std::make_unique<EventFinder>(events, state, bar, table);
            finder->setPace(pace);
            connect(finder.get(), &EventFinder::countChanged, &page, [this] {
                told += finder->countText();
                isFormerKept = isFormerKept && (!isTold() || model.rowCount() == former);
            });
            auto *column = new QVBoxLayout(&page);
            column->addWidget(&bar);
            column->addWidget(&table);
            page.resize(1000, 600);
            page.show();
        }

        /// Whether the last text is of a search that goes on.
        [[nodiscard]] bool isTold() const {
            return told.last().contains(QStringLiteral("… of 20,000 events"));
        }
        QLineEdit &field() { return *bar.findChild<QLineEdit *>(QStringLiteral("findText")); }
        void find(const char *text) {
            told.clear();
            former = model.rowCount();
            field().selectAll();
            // At once, so that one search is for all of it.
            field().insert(QString::fromUtf8(text));
            QTRY_VERIFY(!events.isSearching());
            QTRY_VERIFY(!told.isEmpty() && !isTold());
        }
        QList<int> progress() const {
            QList<int> numbers;
            for (const QString &text : told) {
                if (text.endsWith(QStringLiteral("… of 20,000 events"))) {
                    numbers += QLocale().toInt(text.section(QChar(u'…'), 0, 0));
                }
            }
            return numbers;
        }

        int former = 0;
        bool isFormerKept = true;
    };

private Q_SLOTS:
    void tellsHowManyWereFoundSoFarAndKeepsTheFormerResult() {
        using std::chrono::milliseconds;
        Window window({milliseconds(0), milliseconds(0)});  // tells after each of its runs
        QVERIFY(QTest::qWaitForWindowExposed(&window.page));
        QCOMPARE(window.finder->countText(), QStringLiteral("20,000 events"));
        window.find("disk");
        QCOMPARE(window.told.last(), QStringLiteral("2,000 of 20,000 events"));
        const QList<int> first = window.progress();
        QVERIFY2(first.size() >= 3, qPrintable(window.told.join(u';')));
        QVERIFY(std::ranges::is_sorted(first));
        QVERIFY(first.first() > 0 && first.first() < 2000 && first.last() > first.first());
        window.find("link");  // not a narrower one
        QCOMPARE(window.told.last(), QStringLiteral("18,000 of 20,000 events"));
        QVERIFY(!window.progress().isEmpty());
        QVERIFY(window.isFormerKept);
    }
    void countsWhatIsOfTheRatingsChosenAlone() {
        using std::chrono::milliseconds;
        Window window({milliseconds(0), milliseconds(0)});
        QVERIFY(QTest::qWaitForWindowExposed(&window.page));
        QTest::mouseClick(
            window.bar.findChild<QAbstractButton *>(QStringLiteral("findRatingNormal")),
            Qt::LeftButton);
        QTRY_COMPARE(window.model.rowCount(), kEvents / 2);
        window.find("disk");  // all of them severe
        QCOMPARE(window.told.last(), QStringLiteral("0 of 20,000 events"));
        QVERIFY(!window.progress().isEmpty());
        QCOMPARE(window.progress().last(), 0);
    }
    void saysNothingOfASearchThatIsSoonDone() {
        using std::chrono::milliseconds;
        Window window({milliseconds(0), std::chrono::hours(1)});
        QVERIFY(QTest::qWaitForWindowExposed(&window.page));
        window.find("disk");
        QCOMPARE(window.told.last(), QStringLiteral("2,000 of 20,000 events"));
        QVERIFY(window.progress().isEmpty());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::SearchProgressTest)
#include "SearchProgressTest.moc"
