#include "events/EventTableModel.h"
#include "events/ScanViewFixture.h"
#include "platform/gui/Appearance.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>

namespace quorbel {

using namespace testing;

/// The event table: how wide its columns are, and where the keyboard begins.
class EventTableViewTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    static constexpr int kUsualPage = 950;   // in a window of the first size
    static constexpr int kNarrowPage = 630;  // in the smallest one
    static constexpr const char *kAddress = "2001:0db8:85a3:08d3:1319:8a2e:0370:7344";

    void add(const char *host, const char *priority = "Local7.Error") {
        EventFields event = fields("1700000000", "a message", priority);
        event.host = host;
        list().insertRaw(event);
    }
    void showAt(int width) {
        m_page->resize(width, 500);
        show();
    }
    int width(int column) { return table()->columnWidth(column); }
    int share() { return 30 * table()->fontMetrics().averageCharWidth(); }
    // Whether a cell shows all of its text.
    bool fits(int row, int column) {
        const QModelIndex index = table()->model()->index(row, column);
        return table()->sizeHintForIndex(index).width() <= width(column);
    }
    // Moves the right edge of a column with the mouse.
    void drag(int column, int by) {
        QHeaderView *header = table()->horizontalHeader();
        QWidget *viewport = header->viewport();
        const QPoint edge(header->sectionViewportPosition(column) + width(column) - 1,
                          header->height() / 2);
        QTest::mousePress(viewport, Qt::LeftButton, {}, edge);
        QTest::mouseMove(viewport, edge + QPoint(by / 2, 0));
        QTest::mouseMove(viewport, edge + QPoint(by, 0));
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, edge + QPoint(by, 0));
    }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void aFullAddressIsShownWhole() {
        add(kAddress);
        showAt(kUsualPage);
        QTRY_VERIFY(fits(0, EventTableModel::kHost));
        QVERIFY(width(EventTableModel::kMessage) >= share());
        QVERIFY(!table()->horizontalScrollBar()->isVisible());
    }

    void theHostsWidenOnlyToWhatIsInSight() {
        add(kAddress);
        for (int i = 0; i < 100; ++i) {
            add("10.0.0.5");
        }
        showAt(kUsualPage);
        table()->viewport()->repaint();
        QApplication::processEvents();
        const int narrow = width(EventTableModel::kHost);
        QVERIFY(narrow < 200);
        QVERIFY(fits(0, EventTableModel::kHost));
        table()->scrollToBottom();
        QTRY_VERIFY(fits(100, EventTableModel::kHost));
        // It does not flutter when one goes on.
        const int wide = width(EventTableModel::kHost);
        table()->scrollToTop();
        table()->viewport()->repaint();
        QApplication::processEvents();
        QCOMPARE(width(EventTableModel::kHost), wide);
    }

    void aHostNameOfAnyLengthLeavesTheMessageItsShare() {
        add(std::string(250, 'w').c_str());
        showAt(kUsualPage);
        QTRY_VERIFY(width(EventTableModel::kHost) > 200);
        QVERIFY(width(EventTableModel::kMessage) >= share());
        QVERIFY(!table()->horizontalScrollBar()->isVisible());
    }

    void theMessageCanBeReadInANarrowWindow() {
        add(kAddress);
        add("192.168.100.200");
        showAt(kNarrowPage);
        QTRY_VERIFY(table()->horizontalScrollBar()->isVisible());
        QVERIFY(width(EventTableModel::kMessage) >= share());
        QVERIFY(fits(0, EventTableModel::kHost));
        // With more room, it is used.
        m_page->resize(1600, 500);
        QTRY_VERIFY(fits(1, EventTableModel::kHost));
        QTRY_VERIFY(!table()->horizontalScrollBar()->isVisible());
        QTRY_COMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
        m_page->resize(kNarrowPage, 500);
        QTRY_VERIFY(width(EventTableModel::kHost) < 200);
        QVERIFY(width(EventTableModel::kMessage) >= share());
    }

    void widthsThatTheUserSetStay() {
        add(kAddress);
        showAt(kUsualPage);
        QTRY_VERIFY(fits(0, EventTableModel::kHost));
        const int before = width(EventTableModel::kHost);
        drag(EventTableModel::kHost, -60);
        QCOMPARE(width(EventTableModel::kHost), before - 60);
        m_page->resize(1200, 500);
        table()->viewport()->repaint();
        QApplication::processEvents();
        QCOMPARE(width(EventTableModel::kHost), before - 60);
        QTRY_COMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
        // The message keeps its share here, too.
        drag(EventTableModel::kHost, 500);
        QVERIFY(width(EventTableModel::kMessage) >= share());
    }

    void theKeyboardBeginsAtTheTopEachTimeThePageIsShown() {
        for (int i = 0; i < 100; ++i) {
            list().insertRaw(fields("1700000000"));
        }
        show();
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_End);
        QCOMPARE(selected(), QList<int>{99});
        QTest::keyClick(table(), Qt::Key_Home);
        QTest::keyClick(table(), Qt::Key_Down);
        QCOMPARE(selected(), QList<int>{1});
        m_page->hide();
        show();
        table()->setFocus();
        QVERIFY(selected().isEmpty());
        QTest::keyClick(table(), Qt::Key_Down);
        QCOMPARE(selected(), QList<int>{0});
    }

    void columnsFollowTheFont_data() {
        QTest::addColumn<double>("points");
        QTest::newRow("usual") << 10.0;
        QTest::newRow("large") << 18.0;
    }
    void columnsFollowTheFont() {
        QFETCH(const double, points);
        const QFont usual = QApplication::font();
        QFont font = usual;
        font.setPointSizeF(points);
        QApplication::setFont(font);
        applyAppearance(*qApp);
        makePage();
        m_delegate->state.newDateFormat = "dd.MM.yyyy hh:mm:ss AM/PM";
        add("255.255.255.255", "Authpriv.Informational");
        add("255.255.255.255", "Local7.Error");
        showAt(1600);
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < EventTableModel::kMessage; ++column) {
                QVERIFY2(fits(row, column), qPrintable(QString::number(column)));
            }
        }
        m_page.reset();
        QApplication::setFont(usual);
        applyAppearance(*qApp);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EventTableViewTest)
#include "EventTableViewTest.moc"
