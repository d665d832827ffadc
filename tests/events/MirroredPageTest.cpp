#include "events/FindBarFixture.h"
#include "events/find/FindChip.h"
#include "events/questions/MarkColours.h"
#include "events/questions/QuestionModel.h"
#include "support/TemporaryFolder.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QListView>
#include <QToolTip>

namespace quorbel {

using testing::fields;
using testing::FindBarFixture;
using testing::name;

/// What the events page paints itself, in a window that is read from right to left.
class MirroredPageTest : public QObject, private FindBarFixture {
    Q_OBJECT

private:
    /// Whether something is painted in there, on the button's own ground.
    static bool isInked(const QImage &picture, const QRect &area) {
        const QColor ground = picture.pixelColor(picture.width() / 2, 3);
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (std::abs(picture.pixelColor(x, y).lightness() - ground.lightness()) > 40) {
                    return true;
                }
            }
        }
        return false;
    }
    void markLinks() {
        click("findSaved");
        QTRY_VERIFY(control("findSavedPanel")->isVisible());
        QTest::keyClicks(control("findSavedText"), name("links up"));
        QTest::keyClick(control("findSavedText"), Qt::Key_Return, Qt::ControlModifier);
    }

    testing::TemporaryFolder m_config;

private Q_SLOTS:
    void initTestCase() {
        qputenv("XDG_CONFIG_HOME", m_config.path().c_str());
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    }
    void init() { makePageOfEvents(); }
    void cleanup() { m_page.reset(); }

    void aConditionsCrossIsAtItsLeft() {
        add("sdb");
        auto *chip = static_cast<FindChip *>(chips().first());
        QCOMPARE(chip->crossRect().left(), 0);
        const QImage picture = chip->grab().toImage();
        const int middle = picture.height() / 2;
        QVERIFY(isInked(picture, QRect(chip->crossRect().center() - QPoint(2, 2), QSize(5, 5))));
        // Its text keeps away from there, and begins at the right.
        QVERIFY(!isInked(picture, QRect(chip->crossRect().right() - 1, middle - 4, 2, 8)));
        QVERIFY(isInked(picture, QRect(picture.width() - 14, middle - 6, 10, 12)));
        QTest::mouseClick(chip, Qt::LeftButton, {}, chip->crossRect().center());
        QTRY_VERIFY(chips().isEmpty());
    }

    void aChoicesArrowIsBehindItsText() {
        m_page->resize(1600, 700);
        for (const char *choice : {"findSeverity", "findHost", "findSpan"}) {
            QTRY_VERIFY(control(choice)->isVisible());
            const QImage picture = control(choice)->grab().toImage();
            const int middle = picture.height() / 2;
            QVERIFY2(isInked(picture, QRect(6, middle - 4, 14, 8)), choice);
            QVERIFY2(!isInked(picture, QRect(picture.width() - 6, middle - 4, 4, 8)), choice);
        }
    }

    void aPanelOpensBelowTheRightEdge() {
        m_page->resize(1200, 700);
        click("findHost");
        const auto *panel = control("findHostPanel");
        QTRY_VERIFY(panel->isVisible());
        const QRect anchor = control("findHost")->rect();
        const int right = control("findHost")->mapToGlobal(anchor.topRight()).x();
        QVERIFY(std::abs(panel->geometry().right() - right) <= 4);
    }

    void theNumberOfNewEventsStandsAtTheLeft() {
        m_page->resize(900, 500);
        table()->scrollToBottom();
        m_page->insertEvent(fields("1800000000", "eth0: link is up"));
        auto *newest = control<QAbstractButton>("newestEvents");
        QTRY_VERIFY(newest->isVisible());
        const QRect header = table()->horizontalHeader()->geometry();
        QTRY_VERIFY(newest->geometry().left() - header.left() < 10);
    }

    void aMarkedRowHasItsBarAtTheRightAndItsNameAtTheLeft() {
        markLinks();
        control("findSavedPanel")->hide();
        activate();
        const QRect first = table()->visualRect(table()->model()->index(0, 0));
        const QImage picture = table()->viewport()->grab().toImage();
        QCOMPARE(picture.pixelColor(first.right() - 1, first.top() + 3).rgb(),
                 lookOf(MarkColour::kViolet).line);
        QVERIFY(picture.pixelColor(first.left() + 1, first.top() + 3).rgb() !=
                lookOf(MarkColour::kViolet).line);
        const QRect last = table()->visualRect(table()->model()->index(0, 4));
        const QPoint pill(last.left() + 20, last.center().y());
        QHelpEvent help(QEvent::ToolTip, pill, table()->viewport()->mapToGlobal(pill));
        QApplication::sendEvent(table()->viewport(), &help);
        QTRY_VERIFY(QToolTip::text().contains(name("Links up")));
        QToolTip::hideText();
    }

    void aKeptFiltersSignIsBeforeItsName() {
        markLinks();
        control<QLineEdit>("findSavedText")->clear();
        auto *list = control<QListView>("findSavedList");
        const auto kept = [list] {
            for (int row = 0; row < list->model()->rowCount(); ++row) {
                if (list->model()->index(row, 0).data(QuestionModel::kMark).toInt() >= 0 &&
                    list->model()->index(row, 0).data(QuestionModel::kIsKept).toBool()) {
                    return list->model()->index(row, 0);
                }
            }
            return QModelIndex();
        };
        QTRY_VERIFY(kept().isValid());
        const QRect row = list->visualRect(kept());
        const QImage picture = list->viewport()->grab().toImage();
        QList<int> line;  // where the sign's bar is, and the pill's edge
        for (int x = row.left(); x <= row.right(); ++x) {
            if (picture.pixelColor(x, row.center().y()).rgb() == lookOf(MarkColour::kViolet).line) {
                line.append(x);
            }
        }
        QVERIFY(!line.isEmpty());
        QVERIFY2(row.right() - line.last() < 16, qPrintable(QString::number(line.last())));
        QVERIFY(line.first() > row.left() + 60);  // beyond the count
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::MirroredPageTest)
#include "MirroredPageTest.moc"
