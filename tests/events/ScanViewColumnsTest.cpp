#include "events/EventTableModel.h"
#include "events/ScanViewFixture.h"
#include "platform/gui/Appearance.h"
#include "support/HeaderHands.h"

#include <QApplication>
#include <QFile>
#include <QScrollBar>

#include <string>
#include <vector>

namespace quorbel {

using namespace testing;

/// What the user makes of the event list's columns.
class ScanViewColumnsTest : public QObject, private ScanViewFixture {
    Q_OBJECT

    using Model = EventTableModel;
    static inline const std::vector<int> kModelOrder{0, 1, 2, 3, 4};

    int width(int column) { return table()->columnWidth(column); }
    QList<int> widths() {
        QList<int> result;
        for (int column = 0; column < Model::kMessage; ++column) {
            result += width(column);
        }
        return result;
    }
    HeaderHands hands() { return HeaderHands(*table()); }
    QString memory() {
        return QString::fromStdString((m_configuration->path() / "QuorbelWindow.ini").string());
    }
    void showNextPage() {
        makeNextPage();
        list().insertRaw(fields("1700000000"));
        show();
    }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() {
        makePage();
        list().insertRaw(fields("1700000000"));
        show();
    }
    void cleanup() { m_page.reset(); }

    void widthsAreRemembered() {
        const QList<int> before = widths();
        hands().drag(Model::kDate, 40);
        hands().drag(Model::kHost, -20);
        const QList<int> set = widths();
        QCOMPARE(set, (QList<int>{before[0], before[1] + 40, before[2], before[3] - 20}));
        showNextPage();
        QCOMPARE(widths(), set);
        // They stay as if they had been set just now.
        list().insertShown({"1700000000", "Local7.Error", std::string(200, 'h'), "text", {}},
                           m_delegate->state);
        table()->viewport()->repaint();
        QCoreApplication::processEvents();
        QCOMPARE(widths(), set);
        QCOMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
    }

    void theOrderIsRemembered() {
        QCOMPARE(hands().order(), kModelOrder);
        hands().moveTo(Model::kHost, Model::kDate);
        const std::vector<int> set{0, 3, 1, 2, 4};
        QCOMPARE(hands().order(), set);
        showNextPage();
        QCOMPARE(hands().order(), set);
        QCOMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
    }

    void aMessageThatIsMovedKeepsItsRoom() {
        hands().moveTo(Model::kMessage, Model::kDate);
        QCOMPARE(hands().order(), (std::vector<int>{0, 4, 1, 2, 3}));
        QVERIFY(width(Model::kMessage) >= 30 * table()->fontMetrics().averageCharWidth());
        QVERIFY(width(Model::kMessage) > 2 * width(Model::kDate));
        QTRY_COMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
        QVERIFY(!table()->horizontalScrollBar()->isVisible());
        const int set = width(Model::kMessage);
        showNextPage();
        QCOMPARE(width(Model::kMessage), set);
        QCOMPARE(hands().order(), (std::vector<int>{0, 4, 1, 2, 3}));
    }

    void aDoubleClickOnAnEdgeFitsTheColumn() {
        list().insertShown(
            {"1700000000", "Local7.Error", "host-with-a-long-name.example.org", "text", {}},
            m_delegate->state);
        for (const int narrow : {-40, 300}) {
            hands().drag(Model::kHost, narrow);
            hands().doubleClickEdge(Model::kHost);
            const int hint = table()->sizeHintForIndex(table()->model()->index(0, 3)).width();
            QVERIFY2(width(Model::kHost) >= hint, qPrintable(QString::number(hint)));
            QVERIFY(width(Model::kHost) <= hint + 8);
        }
        const QList<int> set = widths();
        showNextPage();
        QCOMPARE(widths(), set);
    }

    void nothingIsWrittenForWhatTheProgramSets() {
        m_page->resize(700, 500);
        list().insertShown({"1700000000", "Local7.Error", std::string(200, 'h'), "text", {}},
                           m_delegate->state);
        table()->viewport()->repaint();
        QTest::mouseClick(table()->horizontalHeader()->viewport(), Qt::LeftButton, {},
                          QPoint(20, 10));
        QCoreApplication::processEvents();
        QVERIFY(!QFile::exists(memory()));
    }

    void whatDoesNotFitIsIgnored_data() {
        QTest::addColumn<QByteArray>("content");
        const auto columns = [](const char *value) {
            return QByteArray("[Columns]\nEvents=") + value + "\n";
        };
        QTest::newRow("no such key") << QByteArray("[Columns]\nOther=0:100\n");
        QTest::newRow("not an ini file") << QByteArray("\0\xff[[[\n=====", 12);
        QTest::newRow("empty") << columns("");
        QTest::newRow("text") << columns("wide");
        QTest::newRow("too few") << columns("0:100, 1:100, 2:100, 3:100");
        QTest::newRow("too many") << columns("0:99, 1:99, 2:99, 3:99, 4:99, 5:99");
        QTest::newRow("twice the same") << columns("0:99, 1:99, 2:99, 3:99, 3:99");
        QTest::newRow("one that is not there") << columns("0:99, 1:99, 2:99, 3:99, 7:99");
        QTest::newRow("negative number") << columns("0:99, 1:99, 2:99, 3:99, -1:99");
        QTest::newRow("no width") << columns("0:99, 1:99, 2:99, 3:99, 4");
        QTest::newRow("width of nothing") << columns("0:99, 1:99, 2:0, 3:99, 4:99");
        QTest::newRow("negative width") << columns("0:99, 1:99, 2:-9, 3:99, 4:99");
        QTest::newRow("endless width") << columns("0:99, 1:99, 2:10001, 3:99, 4:99");
        QTest::newRow("beyond all numbers") << columns("0:99, 1:99, 2:99999999999, 3:99, 4:99");
        QTest::newRow("other number") << columns("0:99, 1:99, 2:99.5, 3:99, 4:99");
    }
    void whatDoesNotFitIsIgnored() {
        QFETCH(QByteArray, content);
        const QList<int> standard = widths();
        m_configuration->write("QuorbelWindow.ini", content.toStdString());
        showNextPage();
        QCOMPARE(hands().order(), kModelOrder);
        QCOMPARE(widths(), standard);
    }

    void whatFitsIsTakenAndNoColumnIsTooNarrow() {
        m_configuration->write("QuorbelWindow.ini",
                               "[Columns]\nEvents=\"1:150\", 0:1, 3:210, 2:100, 4:400\n");
        showNextPage();
        QCOMPARE(hands().order(), (std::vector<int>{1, 0, 3, 2, 4}));
        QCOMPARE(widths(),
                 (QList<int>{table()->horizontalHeader()->minimumSectionSize(), 150, 100, 210}));
    }

    void aFolderThatCannotBeWrittenChangesNothingElse() {
        m_configuration->write("QuorbelWindow.ini/file", "");
        hands().drag(Model::kDate, 40);
        const QList<int> set = widths();
        QCoreApplication::processEvents();
        QCOMPARE(widths(), set);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewColumnsTest)
#include "ScanViewColumnsTest.moc"
