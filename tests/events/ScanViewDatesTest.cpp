#include "events/ScanViewFixture.h"
#include "platform/gui/QtText.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <QTest>

#include <memory>
#include <string>
#include <utility>

namespace quorbel {

using namespace testing;

/// What the page's dates are after the date format was changed, and what is deleted by them.
class ScanViewDatesTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    static constexpr std::int64_t kFifthOfNovember = 1699179003;  // 2023-11-05 10:10:03 UTC
    static constexpr int kRows = 20;

    void fillWithRows() {
        for (int i = 0; i < kRows; ++i) {
            list().insertRaw(fields(std::to_string(kFifthOfNovember + i), std::to_string(i)));
        }
    }
    static Dictionary allRows() {
        Dictionary rows;
        for (int i = kRows - 1; i >= 0; --i) {
            rows.append(std::to_string(kFifthOfNovember + i) + ",Local7.Error,10.0.0.5," +
                            std::to_string(i) + "\n",
                        "1");
        }
        return rows;
    }
    // As the options page does when it saves.
    void save(const char *format) {
        AppState &state = m_delegate->state;
        state.oldDateFormat = std::exchange(state.newDateFormat, format);
    }
    void showAgain() {
        m_page->hide();
        show();
    }
    void deleteAll() {
        click("deleteEvents");
        answer(name("OK"), true);
        answer(name("Yes"));
    }
    Dictionary sentEvents() {
        const auto received = m_service->waitForCommands(1);
        if (received.size() != 1 || received[0].find("Events") == nullptr ||
            received[0].find("Events")->dictionary() == nullptr) {
            return {{"not an update", received.size()}};
        }
        return *received[0].find("Events")->dictionary();
    }

private Q_SLOTS:
    void initTestCase() {
        m_bus = std::make_unique<testing::PrivateBus>();
        m_service = std::make_unique<testing::ServiceStandIn>();
    }
    void init() {
        m_service->clear();
        makePage();
        m_delegate->state.newDateFormat = m_delegate->state.oldDateFormat = "dd/MM/yyyy HH:mm:ss";
        fillWithRows();
        show();
        QCOMPARE(cell(kRows - 1, 1), name("05/11/2023 10:10:03"));
        m_page->hide();
    }
    void cleanup() { endPage(); }
    void cleanupTestCase() {
        m_service.reset();
        m_bus.reset();
    }

    void aDayThatCouldBeAMonthStaysThroughAllShowings() {
        save("MM/dd/yyyy HH:mm:ss");
        for (int showing = 0; showing < 4; ++showing) {
            showAgain();
            QCOMPARE(cell(kRows - 1, 1), name("11/05/2023 10:10:03"));
        }
        deleteAll();
        QCOMPARE(sentEvents(), allRows());
    }

    void showingsThatNobodyLookedAtCountAsWell() {
        save("MM/dd/yyyy HH:mm:ss");
        table()->hide();  // so that no date is asked for
        showAgain();
        showAgain();
        table()->show();
        QCOMPARE(cell(kRows - 1, 1), name("11/05/2023 10:10:03"));
        deleteAll();
        QCOMPARE(sentEvents(), allRows());
    }

    void savingTwiceBeforeTheNextShowingLeavesNoRowBehind() {
        save("MM/dd/yyyy HH:mm:ss");
        save("MM/dd/yyyy HH:mm:ss");
        showAgain();
        m_page->insertEvent(fields("1699179100", "new"));
        QCOMPARE(cell(0, 1), name("11/05/2023 10:11:40"));
        for (int row = 1; row <= kRows; ++row) {
            QVERIFY(cell(row, 1).startsWith(name("11/05/2023 10:10:")));
        }
        deleteAll();
        Dictionary expected{{"1699179100,Local7.Error,10.0.0.5,new\n", "1"}};
        for (const auto &[key, value] : allRows()) {
            expected.append(key, value);
        }
        QCOMPARE(sentEvents(), expected);
    }

    void threeFormatsInTurnReadWhatEachShowed() {
        for (const char *format :
             {"MM/dd/yyyy HH:mm:ss", "d/M/yy h:mm:ss AM/PM", "dd/MM/yyyy HH:mm:ss", ""}) {
            save(format);
            showAgain();
        }
        QCOMPARE(cell(kRows - 1, 1), name("2023-11-05 10:10:03"));
        deleteAll();
        QCOMPARE(sentEvents(), allRows());
    }

    void announcedRemovalsFindTheirRowsInEachFormat() {
        const auto announce = [this](int number) {
            m_page->removeEvent(
                fields(std::to_string(kFifthOfNovember + number), std::to_string(number)));
        };
        save("MM/dd/yyyy HH:mm:ss");
        announce(0);  // while the rows still stand in the format before
        QTRY_COMPARE(list().size(), std::size_t{kRows - 1});
        for (int number = 1; number < kRows; ++number) {
            showAgain();
            announce(number);
            QTRY_COMPARE(list().size(), static_cast<std::size_t>(kRows - 1 - number));
        }
    }

private:
    std::unique_ptr<testing::PrivateBus> m_bus;
    std::unique_ptr<testing::ServiceStandIn> m_service;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewDatesTest)
#include "ScanViewDatesTest.moc"
#include "core/AppState.h"
