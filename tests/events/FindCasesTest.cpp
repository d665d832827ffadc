// What one finds with the filter bar, what it does to the commands of the page, and what it says
// when it finds nothing.

#include "core/EventIntake.h"
#include "events/FindBarFixture.h"
#include "events/find/FindSpan.h"
#include "platform/gui/LongText.h"

#include <QAction>
#include <QClipboard>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QScrollBar>
#include <QTest>

#include <set>

namespace quorbel {

using namespace testing;

class FindCasesTest : public QObject, private FindBarFixture {
    Q_OBJECT

private:
    static bool hasColour(const QImage &image, QColor colour) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) == colour) {
                    return true;
                }
            }
        }
        return false;
    }
    bool isMarked(int row, int column) {
        const QRect place = table()->visualRect(table()->model()->index(row, column));
        return hasColour(table()->viewport()->grab(place).toImage(), kMark);
    }
    ScanViewEvent *sheet() { return m_page->findChild<ScanViewEvent *>(); }
    /// Opens the table's menu over a row and chooses.
    void chooseAt(int row, const char *command) {
        clickRow(row);
        QContextMenuEvent event(QContextMenuEvent::Mouse, placeOf(row),
                                table()->viewport()->mapToGlobal(placeOf(row)));
        QApplication::sendEvent(table()->viewport(), &event);
        QTRY_VERIFY(m_page->findChild<QMenu *>(name("rowMenu")) != nullptr);
        auto *menu = m_page->findChild<QMenu *>(name("rowMenu"));
        for (QAction *action : menu->actions()) {
            if (action->objectName() == name(command)) {
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                QTRY_VERIFY(m_page->findChild<QMenu *>(name("rowMenu")) == nullptr);
                return;
            }
        }
        QFAIL(command);
    }
    std::set<std::string> texts(int column) {
        std::set<std::string> texts;
        for (int row = 0; row < rows(); ++row) {
            texts.insert(cell(row, column).toStdString());
        }
        return texts;
    }
    void setFromTo(int from, int to) {
        m_page->findChild<FindSpan *>()->setClock([this] { return noon(); });
        choose("findSpan", name("From ... to ..."));
        QTRY_VERIFY(control("findSpanPanel")->isVisible());
        control<QDateTimeEdit>("findFrom")->setDateTime({noon().date(), QTime(from, 0)});
        control<QDateTimeEdit>("findTo")->setDateTime({noon().date(), QTime(to, 0)});
        QTest::mouseClick(control("findSpanShow"), Qt::LeftButton);
    }

    const QColor kMark{0xff, 0xe9, 0xa8};
    const QColor kScrollMark{0xd9, 0x3a, 0x3f};

private Q_SLOTS:
    void init() { makePageOfEvents(); }
    void cleanup() { endPage(); }

    // What an administrator looks for.
    void aDisk() {
        find(name("sdb1"));
        QTRY_COMPARE(count(), name("16 of 96 events"));
        QVERIFY(isMarked(0, 4));
        QVERIFY(!isMarked(0, 3));
    }
    void oneHostBetweenTwoAndFourInTheMorning() {
        find(name("fs01"));
        setFromTo(2, 4);
        QTRY_COMPARE(count(), name("2 of 96 events"));
        QCOMPARE(texts(3), std::set<std::string>{"fs01"});
        QCOMPARE(cell(0, 1), name("2026-11-21 03:15:00"));
        QCOMPARE(cell(1, 1), name("2026-11-21 02:15:00"));
    }

    void whatIsFoundIsMarkedInTheDetails() {
        find(name("failed 9"));
        QTRY_COMPARE(rows(), 1);
        add("");
        find(name("fs01"));
        QTRY_COMPARE(rows(), 0);
        QTest::keyClick(field(), Qt::Key_Escape);
        find(name("10.1"));
        QTRY_VERIFY(rows() == 1 && isMarked(0, 3));
        QTest::keyClick(field(), Qt::Key_Down);
        clickRow(0);
        QTest::keyClick(table(), Qt::Key_Return);
        QTRY_VERIFY(sheet() != nullptr && sheet()->isVisible());
        auto *message = sheet()->findChild<LongTextView *>(name("eventMessage"));
        QCOMPARE(message->extraSelections().size(), 1);
        QCOMPARE(message->extraSelections().first().cursor.selectedText(), name("failed 9"));
        const auto isFieldMarked = [this](const char *field) {
            return hasColour(sheet()->findChild<QWidget *>(name(field))->grab().toImage(), kMark);
        };
        QVERIFY(isFieldMarked("eventHost"));
        QVERIFY(!isFieldMarked("eventPriority"));
    }
    void steppingGoesThroughWhatMatches() {
        find(name("disk"));
        QTRY_COMPARE(rows(), 16);
        clickRow(1);
        QTest::keyClick(table(), Qt::Key_Return);
        QTRY_VERIFY(sheet() != nullptr && sheet()->isVisible());
        auto *message = sheet()->findChild<LongTextView *>(name("eventMessage"));
        QCOMPARE(message->wholeText(), name("disk sdb1 failed 84"));
        QTest::mouseClick(sheet()->findChild<QWidget *>(name("eventDown")), Qt::LeftButton);
        QCOMPARE(message->wholeText(), name("disk sdb1 failed 78"));
    }
    void copiesAndExportsWhatMatches() {
        find(name("failed 9"));
        QTRY_COMPARE(rows(), 1);
        QTest::keyClick(field(), Qt::Key_Down);
        QTest::keyClick(table(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(QGuiApplication::clipboard()->text(), name("disk sdb1 failed 90"));
        table()->clearSelection();
        click("exportEvents");
        answer(name("OK"), true);
        QTRY_VERIFY(m_page->findChild<QFileDialog *>(name("filePanel")) != nullptr);
        auto *panel = m_page->findChild<QFileDialog *>(name("filePanel"));
        const QString path = QString::fromStdString((m_configuration->path() / "out.txt").string());
        panel->findChild<QLineEdit *>(name("fileNameEdit"))->setText(path);
        QTest::mouseClick(
            panel->findChild<QDialogButtonBox *>(name("buttonBox"))->button(QDialogButtonBox::Save),
            Qt::LeftButton);
        QFile file(path);
        QTRY_VERIFY(file.exists() && file.size() > 0);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray written = file.readAll();
        QCOMPARE(written.count('\n'), 2);
        QVERIFY(written.endsWith("10.1.0.7\tdisk sdb1 failed 90\n"));
    }

    void nothingFoundNamesTheCostliestCondition() {
        add("disk");
        add("moon");
        add("fs01");
        QTRY_VERIFY(control("nothingFound")->isVisible());
        auto *without = control<QAbstractButton>("findWithout");
        QTRY_VERIFY(without->isVisible());
        QCOMPARE(without->text(), name("Without “moon”: 8"));
        QTest::mouseClick(without, Qt::LeftButton);
        QTRY_COMPARE(rows(), 8);
        QVERIFY(!control("nothingFound")->isVisible());
        QCOMPARE(chips().size(), 2);
    }
    void nothingFoundLeadsBackToAll() {
        find(name("moon"));
        QTRY_VERIFY(control("findNothingClear")->isVisible());
        QVERIFY(!control("findWithout")->isVisible());
        QTest::mouseClick(control("findNothingClear"), Qt::LeftButton);
        QTRY_COMPARE(rows(), 96);
        QVERIFY(!control("nothingFound")->isVisible());
    }
    void nothingFoundEndsWithTheFirstThatMatches() {
        find(name("moon"));
        QTRY_VERIFY(control("nothingFound")->isVisible());
        m_page->insertEvent({"1795000000", "Kern.Error", "fs01", "moonlight", {}});
        QTRY_VERIFY(!control("nothingFound")->isVisible());
        QCOMPARE(rows(), 1);
    }

    void theScrollBarShowsWhereSevereEventsAre() {
        QVERIFY(!control("scrollMarks")->isVisible());
        for (int i = 0; i < 300; ++i) {
            list().insertRaw({"1795000000", "Kern.Debug", "fs01", "disk", {}});
        }
        find(name("disk"));
        QTRY_COMPARE(rows(), 316);
        QWidget *marks = control("scrollMarks");
        QTRY_VERIFY(marks->isVisible());
        const QImage image = marks->grab().toImage();
        // They are all among the oldest 16 of 316 events.
        QVERIFY(!hasColour(image.copy(0, 0, image.width(), image.height() * 9 / 10), kScrollMark));
        QVERIFY(hasColour(image.copy(0, image.height() * 9 / 10, image.width(), image.height()),
                          kScrollMark));
        m_page->insertEvent({"1795000000", "Kern.Emergency", "fs01", "disk", {}});
        QTRY_VERIFY(hasColour(marks->grab(QRect(0, 0, marks->width(), 3)).toImage(), kScrollMark));
        QTest::keyClick(field(), Qt::Key_Escape);
        QTRY_VERIFY(!marks->isVisible());
    }

    void theScrollBarsHandleStaysInSightAmongSevereEvents() {
        for (int i = 0; i < 700; ++i) {
            m_page->insertEvent({"1795000000", "Kern.Emergency", "fs01", "outage", {}});
        }
        find(name("outage"));
        QTRY_COMPARE(rows(), 700);
        QTRY_VERIFY(control("scrollMarks")->isVisible());
        QScrollBar &bar = *table()->verticalScrollBar();
        const QColor handle{0xc4, 0xcc, 0xd6};
        const QPoint inHandle(bar.width() / 2, 16);
        QCOMPARE(bar.grab().toImage().pixelColor(inHandle), handle);
        QCOMPARE(bar.grab().toImage().pixelColor(inHandle + QPoint(0, bar.height() / 2)),
                 kScrollMark);
        // The marks tell of the rows beside the handle too, and the mouse takes it through them.
        QCOMPARE(bar.grab().toImage().pixelColor(bar.width() - 1, 16), kScrollMark);
        QTest::mousePress(&bar, Qt::LeftButton, {}, inHandle);
        QTest::mouseMove(&bar, inHandle + QPoint(0, bar.height() / 2));
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, inHandle + QPoint(0, bar.height() / 2));
        QVERIFY(bar.value() > bar.maximum() / 3);
        QVERIFY(bar.grab().toImage().pixelColor(inHandle + QPoint(0, bar.height() / 2)) !=
                kScrollMark);
        QCOMPARE(bar.grab().toImage().pixelColor(inHandle), kScrollMark);
    }

    void surroundingsKeepTheSelectedEventInSight() {
        add("disk");
        choose("findSeverity", name("Critical and worse"));
        QTRY_COMPARE(rows(), 16);
        activate();
        clickRow(12);
        const QString chosen = cell(12, 4);
        const int top = table()->visualRect(table()->model()->index(12, 0)).top();
        QTest::keyClick(table(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(rows(), 96);
        QCOMPARE(selected().size(), 1);
        const int row = selected().first();
        QCOMPARE(cell(row, 4), chosen);
        QCOMPARE(table()->visualRect(table()->model()->index(row, 0)).top(), top);
        QVERIFY(table()->hasFocus());
    }

    void onlyThisHostAndNotThatOne() {
        chooseAt(0, "onlyThisHost");
        QTRY_COMPARE(rows(), 24);
        QCOMPARE(texts(3), std::set<std::string>{"fs02"});
        click("findClear");
        chooseAt(0, "notThisHost");
        QTRY_COMPARE(rows(), 72);
        chooseAt(0, "notThisHost");
        QTRY_COMPARE(rows(), 48);
        QCOMPARE(texts(3), (std::set<std::string>{"db02", "fs01"}));
        QCOMPARE(control<QAbstractButton>("findHost")->text(), name("!fs02, !10.1.0.7"));
    }
    void aHostOfSpecialCharactersIsMeantAlone() {
        m_page->insertEvent({"1795000000", "Kern.Error", "!fs*,1/2", "odd", {}});
        m_page->insertEvent({"1795000000", "Kern.Error", "-fs*-1-2", "odd", {}});
        chooseAt(1, "onlyThisHost");
        QTRY_COMPARE(rows(), 1);
        QCOMPARE(cell(0, 3), name("!fs*,1/2"));
    }
    void onlyLikeThisTakesNumbersForAny() {
        chooseAt(5, "onlyLikeThis");
        QTRY_COMPARE(rows(), 16);
        QCOMPARE(chips().size(), 1);
        QVERIFY(cell(0, 4).startsWith(name("disk sdb1 failed")));
        click("findClear");
        chooseAt(0, "onlyLikeThis");
        QTRY_COMPARE(rows(), 80);
    }

    void whatArrivesIsSortedOut() {
        find(name("disk"));
        QTRY_COMPARE(rows(), 16);
        clickRow(3);
        for (int i = 0; i < 50; ++i) {
            m_page->insertEvent({"1795000000", "Kern.Error", "fs01", "link down", {}});
        }
        QCOMPARE(rows(), 16);
        QCOMPARE(selected(), QList<int>{3});
        m_page->insertEvent({"1795000000", "Kern.Error", "fs01", "DISK again", {}});
        QCOMPARE(cell(0, 4), name("DISK again"));
        QTRY_COMPARE(count(), name("17 of 147 events"));
    }

    void hostileTextsAreFoundAndShown() {
        const std::string huge = std::string(1 << 20U, 'x') + " needle";
        const std::array<std::string, 4> messages = {huge, "bytes \xff\xfe needle",
                                                     "\u202eeldeen needle \u05d0\u05d1",
                                                     "STRASSE Ärger NEEDLE"};
        for (const std::string &message : messages) {
            m_page->insertEvent({"1795000000", "Kern.Error", "fs01", message, {}});
        }
        find(name("needle"));
        QTRY_COMPARE(rows(), 4);
        for (int row = 0; row < 4; ++row) {
            QVERIFY2(isMarked(row, 4), qPrintable(QString::number(row)));
        }
        QTest::keyClick(field(), Qt::Key_Escape);
        QGuiApplication::clipboard()->setText(name("äRGER"));
        QTest::keyClick(field(), Qt::Key_V, Qt::ControlModifier);
        QTRY_COMPARE(rows(), 1);
        QVERIFY(isMarked(0, 4));
    }
    void noExpressionStopsTheWindow() {
        m_page->insertEvent({"1795000000", "Kern.Error", "fs01", std::string(1 << 20U, 'a'), {}});
        click("findRegex");
        for (const char *expression :
             {"(a*)*b", "(a|aa)+$", "(.*)(.*)(.*)(.*)[^a]b", "(?:a{1,30}){20}c"}) {
            find(name(expression));
            QTRY_VERIFY(control("findError")->isVisible() || count().contains(name(" of 97")));
        }
        find(name("^a+$"));
        QTRY_COMPARE(count(), name("1 of 97 events"));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::FindCasesTest)
#include "FindCasesTest.moc"
