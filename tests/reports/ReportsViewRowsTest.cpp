#include "platform/gui/Appearance.h"
#include "reports/ReportTableModel.h"
#include "reports/ReportTableView.h"
#include "reports/ReportsViewFixture.h"

#include <QAbstractItemModelTester>
#include <QHash>
#include <QImage>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>

#include <random>

namespace quorbel {

using namespace testing;

/// What happens to the rows of a report: expanding, collapsing, reading with progress.
class ReportsViewRowsTest : public QObject, private ReportsViewFixture {
    Q_OBJECT

private:
    static constexpr const char *kLog =
        "1700000000,Local7.Error,h1,one\r\n"
        "1700000001,Kern.Alert,h2,two\r\n"
        "1700000002,Local7.Error,h1,two\r\n";

    // Several files, which are read one after the other.
    static constexpr int kHosts = 200;
    static constexpr int kFiles = 60;
    static constexpr int kLinesOfHost = 10;  // in each file
    void writeManyLogs() {
        std::string lines;
        for (int i = 0; i < kHosts * kLinesOfHost; ++i) {
            lines += "1700000000,Local7.Error,10.0.0." + std::to_string(i % kHosts) +
                     ",a message that is as long as such messages are\r\n";
        }
        for (int i = 0; i < kFiles; ++i) {
            log((std::to_string(i) + ".log").c_str(), lines);
        }
    }
    template <typename Act>
    bool duringDisplay(Act act) {
        return duringWork(act, [this] { display(0); });
    }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() { makePage(); }
    void cleanup() { dropPage(); }

    void aClickExpandsAndCollapses() {
        log("x.log", kLog);
        display(0);
        const QStringList groups = rows();
        clickRow(1);  // the last one
        QCOMPARE(rowCount(), 3);
        QCOMPARE(selected(), QList<int>{1});
        clickRow(0);
        QCOMPARE(rowCount(), 5);
        QCOMPARE(selected(), QList<int>{0});
        QCOMPARE(cell(1, 3), name("one"));
        QCOMPARE(cell(4, 3), name("two"));
        // A detail is only selected.
        for (const int column : {0, 3}) {
            clickRow(2, Qt::NoModifier, column);
            QCOMPARE(rowCount(), 5);
            QCOMPARE(selected(), QList<int>{2});
        }
        clickRow(3);
        QCOMPARE(rowCount(), 4);
        clickRow(0, Qt::NoModifier, 2);
        QCOMPARE(rows(), groups);
    }

    void aClickThatLeavesNothingSelectedChangesNothing() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        QCOMPARE(rowCount(), 4);
        clickRow(0, Qt::ControlModifier);
        QVERIFY(selected().isEmpty());
        QCOMPARE(rowCount(), 4);
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(20, table()->viewport()->height() - 5));
        QCOMPARE(rowCount(), 4);
        m_page->tableClicked();
        QCOMPARE(rowCount(), 4);
    }

    void eachOfSeveralQuickClicksCounts() {
        log("x.log", kLog);
        display(0);
        const QPoint place = table()->visualRect(table()->model()->index(0, 0)).center();
        // As a window system tells of quick clicks: each second one is a double click.
        for (const int expected : {4, 2, 4, 2}) {
            const bool isSecond = expected == 2;
            const auto type = isSecond ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress;
            for (const auto event : {type, QEvent::MouseButtonRelease}) {
                const bool isRelease = event == QEvent::MouseButtonRelease;
                QMouseEvent mouse(event, place, table()->viewport()->mapToGlobal(place),
                                  Qt::LeftButton, isRelease ? Qt::NoButton : Qt::LeftButton, {});
                QApplication::sendEvent(table()->viewport(), &mouse);
            }
            QCOMPARE(rowCount(), expected);
        }
    }

    void anOpenedGroupShowsItsFirstRows_data() {
        QTest::addColumn<bool>("byKeyboard");
        QTest::newRow("clicked") << false;
        QTest::newRow("by keyboard") << true;
    }
    void anOpenedGroupShowsItsFirstRows() {
        QFETCH(const bool, byKeyboard);
        std::string lines;
        for (int i = 0; i < 50 * 20; ++i) {
            lines += "1,P,host" + std::to_string(i % 50) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        const auto isInSight = [this](int row) {
            return table()->viewport()->rect().contains(
                table()->visualRect(table()->model()->index(row, 0)));
        };
        int last = 0;
        while (isInSight(last + 1)) {
            ++last;
        }
        QVERIFY(last > 5 && last < 40);
        const auto toggle = [&](int row) {
            if (byKeyboard) {
                table()->selectRow(row);
                QTest::keyClick(table(), Qt::Key_Space);
            } else {
                clickRow(row);
            }
        };
        toggle(1);
        QCOMPARE(rowCount(), 70);
        QCOMPARE(table()->verticalScrollBar()->value(), 0);  // enough of it is in sight
        toggle(1);
        toggle(last);
        QCOMPARE(rowCount(), 70);
        QVERIFY(isInSight(last));
        QVERIFY(isInSight(last + 5));
        QCOMPARE(selected(), QList<int>{last});
        // Closing moves nothing, neither does a click on a detail.
        const int place = table()->verticalScrollBar()->value();
        toggle(last + 3);
        QCOMPARE(table()->verticalScrollBar()->value(), place);
        toggle(last);
        QCOMPARE(rowCount(), 50);
        QCOMPARE(table()->verticalScrollBar()->value(), place);
        // The last group of all: there is nothing below it yet.
        toggle(49);
        QCOMPARE(rowCount(), 70);
        QVERIFY(isInSight(49) && isInSight(54));
    }

    void aGroupStaysInSightInALowWindow() {
        std::string lines;
        for (int i = 0; i < 30; ++i) {
            lines += "1,P,h," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        m_page->resize(600, 250);
        QTRY_VERIFY(table()->viewport()->height() < 5 * table()->rowHeight(0));
        clickRow(0);
        QCOMPARE(rowCount(), 31);
        QCOMPARE(table()->verticalScrollBar()->value(), 0);
    }

    void theKeyboardExpandsAndCollapses() {
        log("x.log", kLog);
        display(0);
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_Down);
        const auto countAfter = [this](Qt::Key key) {
            QTest::keyClick(table(), key);
            return rowCount();
        };
        QCOMPARE(selected().size(), 1);
        table()->selectRow(0);
        const std::pair<Qt::Key, int> steps[] = {
            {Qt::Key_Left, 2},  {Qt::Key_Right, 4},  {Qt::Key_Right, 4}, {Qt::Key_Left, 2},
            {Qt::Key_Space, 4}, {Qt::Key_Return, 2}, {Qt::Key_Enter, 4}, {Qt::Key_Down, 4},
            {Qt::Key_Space, 4}, {Qt::Key_Left, 4},   {Qt::Key_Right, 4}, {Qt::Key_Up, 4},
            {Qt::Key_Space, 2}};
        for (const auto &[key, rows] : steps) {
            QCOMPARE(countAfter(key), rows);
        }
        // A key held down does it once.
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(table(), &held);
        QCOMPARE(rowCount(), 2);
    }

    void markersShowTheStateAndSelectionDoesNotHideThem() {
        log("x.log", kLog);
        display(0);
        const auto markerPixels = [this](int row) {
            const QRect cell = table()->visualRect(table()->model()->index(row, 0));
            const QImage image = table()
                                     ->viewport()
                                     ->grab(QRect(cell.topLeft(), QSize(24, cell.height())))
                                     .toImage();
            int dark = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    dark += qGray(image.pixel(x, y)) < 150 ? 1 : 0;
                }
            }
            return dark;
        };
        const int plus = markerPixels(0);
        QVERIFY2(plus > 8, qPrintable(QString::number(plus)));
        clickRow(0);
        const int minus = markerPixels(0);
        QVERIFY2(minus > 4 && minus < plus, qPrintable(QString::number(minus)));
        QCOMPARE(markerPixels(1), 0);
        QCOMPARE(markerPixels(3), plus);
        QCOMPARE(table()->model()->index(0, 0).data(Qt::AccessibleTextRole).toString(),
                 name("h1, expanded, 2 events, 67 %"));
        QCOMPARE(table()->model()->index(3, 0).data(Qt::AccessibleTextRole).toString(),
                 name("h2, collapsed, 1 event, 33 %"));
    }

    void anyClicksKeepTheModelConsistent() {
        std::string lines;
        for (int i = 0; i < 300; ++i) {
            lines += "1,P,host" + std::to_string(i * i % 40) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        const QAbstractItemModelTester tester(
            table()->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        // The same walks over a plain list of rows.
        QStringList plain = rows();
        QList<bool> expanded(plain.size(), false);
        QHash<QString, QStringList> details;
        for (int i = 0; i < 300; ++i) {
            const QString host = QStringLiteral("host%1|||").arg(i * i % 40);
            details[host] += QStringLiteral("|1970-01-01 00:00:01|P|%1").arg(i);
        }
        std::mt19937 random(11);
        for (int click = 0; click < 150; ++click) {
            const int row = static_cast<int>(random() % static_cast<unsigned>(plain.size()));
            clickRow(row);
            QCOMPARE(selected(), QList<int>{row});
            if (const QStringList own = details.value(plain[row]); !own.isEmpty()) {
                if (expanded[row]) {
                    plain.remove(row + 1, own.size());
                    expanded.remove(row + 1, own.size());
                } else {
                    for (int i = 0; i < own.size(); ++i) {
                        plain.insert(row + 1 + i, own[i]);
                        expanded.insert(row + 1 + i, false);
                    }
                }
                expanded[row] = !expanded[row];
            }
            QCOMPARE(rows(), plain);
        }
    }

    void saysWhatToDoWhileTheTableIsEmpty() {
        auto *view = qobject_cast<ReportTableView *>(table());
        show();
        QVERIFY(view->hint().contains(name("press Display")));
        display(0);
        QCOMPARE(view->hint(), name("No events in the chosen log."));
        log("x.log", kLog);
        const QImage empty = view->viewport()->grab().toImage();
        view->setHint({});
        QVERIFY(view->viewport()->grab().toImage() != empty);
    }

    void aLongReportShowsProgressAndCanBeCancelled() {
        writeManyLogs();
        QVERIFY(duringDisplay([&](QWidget *window) {
            QCOMPARE(window->windowModality(), Qt::ApplicationModal);
            QVERIFY(window->findChild<QWidget *>(name("onCancel")) != nullptr);
            QTest::mouseClick(window->findChild<QPushButton *>(name("onCancel")), Qt::LeftButton);
        }));
        QVERIFY(progressWindow() == nullptr);
        QCOMPARE(rowCount(), 0);
        QVERIFY(!table()->isColumnHidden(0));
        QCOMPARE(qobject_cast<ReportTableView *>(table())->hint(),
                 name("The report was cancelled."));
    }

    void theEscapeKeyAndClosingTheWindowCancelToo() {
        writeManyLogs();
        QVERIFY(duringDisplay([](QWidget *window) {
            QTest::keyClick(window->findChild<QWidget *>(name("onCancel")), Qt::Key_Escape);
        }));
        QCOMPARE(rowCount(), 0);
        QVERIFY(duringDisplay([](QWidget *window) { QVERIFY(window->close()); }));
        QCOMPARE(rowCount(), 0);
        QVERIFY(progressWindow() == nullptr);
    }

    void thePageWorksOnAfterACancelledReport() {
        writeManyLogs();
        QVERIFY(duringDisplay([](QWidget *window) {
            QTest::mouseClick(window->findChild<QPushButton *>(name("onCancel")), Qt::LeftButton);
        }));
        for (const auto &file : std::filesystem::directory_iterator(m_folder->path())) {
            std::filesystem::remove(file.path());
        }
        log("x.log", kLog);
        QVERIFY(reportDisplay()->isEnabled());
        click("reportDisplay");
        QCOMPARE(rows(), (QStringList{name("h1|||"), name("h2|||")}));
        clickRow(0);
        QCOMPARE(rowCount(), 4);
    }

    void theFolderMayChangeWhileAReportIsRead() {
        writeManyLogs();
        QVERIFY(duringDisplay([this](QWidget *) {
            // The one that is read last; no file that comes now belongs to the report.
            std::filesystem::remove(m_folder->path() / "9.log");
            log("99.log", "1,P,new,m\n");
            log("zz.log", "1,P,new,m\n");
        }));
        constexpr int kExpanded = kHosts + kLinesOfHost * (kFiles - 1);
        QCOMPARE(rowCount(), kHosts);
        clickRow(0);
        QCOMPARE(rowCount(), kExpanded);
        // All of it may go: the report stands until the next one.
        std::filesystem::remove_all(m_folder->path());
        clickRow(0);
        clickRow(kHosts - 1);
        QCOMPARE(rowCount(), kExpanded);
        QCOMPARE(cell(kHosts, 3), name("a message that is as long as such messages are"));
        click("reportDisplay");
        QCOMPARE(rowCount(), 0);
    }

    void thePageShownAnewMeanwhileStaysEmpty() {
        writeManyLogs();
        QVERIFY(duringDisplay([this](QWidget *) { m_page->viewWillAppear(); }));
        QCOMPARE(rowCount(), 0);
        QVERIFY(table()->isColumnHidden(0));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ReportsViewRowsTest)
#include "ReportsViewRowsTest.moc"
