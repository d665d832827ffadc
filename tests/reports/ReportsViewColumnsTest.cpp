#include "platform/gui/Appearance.h"
#include "reports/ReportsViewFixture.h"
#include "support/HeaderHands.h"

#include <vector>

namespace quorbel {

using namespace testing;

/// What the user makes of a report's columns.
class ReportsViewColumnsTest : public QObject, private ReportsViewFixture {
    Q_OBJECT

    static inline const std::vector<int> kModelOrder{0, 1, 2, 3};

    int width(int column) { return table()->columnWidth(column); }
    HeaderHands hands() { return HeaderHands(*table()); }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() {
        makePage();
        log("1.log", "1700000000,Local7.Error,h1,one\r\n");
    }
    void cleanup() { dropPage(); }

    void eachKindRemembersItsOwn() {
        display(0);
        const QList<int> standard{width(0), width(1), width(2)};
        hands().drag(0, 60);
        hands().moveTo(2, 1);
        QCOMPARE(hands().order(), (std::vector<int>{0, 2, 1, 3}));
        const QList<int> set{width(0), width(1), width(2)};
        QCOMPARE(set, (QList<int>{standard[0] + 60, standard[1], standard[2]}));
        display(2);
        QCOMPARE(hands().order(), kModelOrder);
        QCOMPARE((QList<int>{width(0), width(1), width(2)}), standard);
        display(0);
        QCOMPARE((QList<int>{width(0), width(1), width(2)}), set);
        makeNextPage();
        display(0);
        QCOMPARE((QList<int>{width(0), width(1), width(2)}), set);
        QCOMPARE(hands().order(), (std::vector<int>{0, 2, 1, 3}));
        QCOMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
    }

    void theGroupsStayInFront() {
        display(0);
        hands().moveTo(0, 2);
        QCOMPARE(hands().order(), kModelOrder);
        hands().moveTo(2, 0);
        QCOMPARE(hands().order().front(), 0);
        finishRemembering();
        m_configuration->write("QuorbelWindow.ini",
                               "[Columns]\nReportByHost=1:99, 0:99, 2:99, 3:99\n");
        makeNextPage();
        display(0);
        QCOMPARE(hands().order(), kModelOrder);
        QVERIFY(width(0) != 99);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ReportsViewColumnsTest)
#include "ReportsViewColumnsTest.moc"
