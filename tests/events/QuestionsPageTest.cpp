// Kept filters and ready-made questions, by mouse and keyboard, on the real page.

#include "core/SavedFilterStore.h"
#include "events/FindBarFixture.h"
#include "events/find/FindSpan.h"
#include "events/questions/MarkColours.h"
#include "platform/Files.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QFileDialog>
#include <QFontMetrics>
#include <QHeaderView>
#include <QHelpEvent>
#include <QListView>
#include <QRegularExpression>
#include <QScreen>
#include <QStandardPaths>
#include <QTest>
#include <QToolTip>

#include <algorithm>

namespace quorbel {

using namespace testing;

class QuestionsPageTest : public QObject, private FindBarFixture {
    Q_OBJECT

private:
    static std::filesystem::path keptFile() {
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                   .toStdString() +
               "/QuorbelFilters.txt";
    }
    static std::string keptText() { return readFile(keptFile()).value_or(""); }
    QWidget *panel() { return control("findSavedPanel"); }
    QLineEdit *search() { return control<QLineEdit>("findSavedText"); }
    QListView *offers() { return control<QListView>("findSavedList"); }
    QString textOf(const char *label) { return control<QLabel>(label)->text(); }

    void open() {
        activate();
        QTest::keyClick(m_page.get(), Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(panel()->isVisible());
        QTRY_VERIFY(search()->hasFocus());
    }
    void type(const char *words) { QTest::keyClicks(search(), name(words)); }
    void press(const char *button) {
        QVERIFY(control<QAbstractButton>(button)->isEnabled());
        QTest::mouseClick(control<QAbstractButton>(button), Qt::LeftButton);
    }
    /// Chooses an entry of the menu that is open by its object name or text.
    void pick(const char *entry) {
        QTRY_VERIFY(qobject_cast<QMenu *>(QApplication::activePopupWidget()) != nullptr);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        for (QAction *action : menu->actions()) {
            if (action->objectName() == name(entry) || action->text() == name(entry)) {
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                return;
            }
        }
        QFAIL(entry);
    }
    /// "Name: count" of what is offered; a title alone.
    QStringList offered() {
        QStringList texts;
        const QAbstractItemModel &model = *offers()->model();
        for (int row = 0; row < model.rowCount(); ++row) {
            const QModelIndex index = model.index(row, 0);
            const bool isTitle = index.data(Qt::UserRole).toBool();
            texts += index.data().toString() +
                     (isTitle ? QString() : name(": ") + index.data(Qt::UserRole + 1).toString());
        }
        return texts;
    }
    QString current() { return offers()->currentIndex().data().toString(); }
    void keepFilter(const char *filterName) {
        open();
        press("findSavedKeep");
        QTRY_VERIFY(control("findSavedName")->hasFocus());
        QTest::keyClicks(control("findSavedName"), name(filterName));
        QTest::keyClick(control("findSavedName"), Qt::Key_Return);
    }
    void close() {
        panel()->hide();
        activate();
    }
    QColor colourAt(int row, int x) {
        const QRect cell = table()->visualRect(table()->model()->index(row, 0));
        return table()->viewport()->grab().toImage().pixelColor(x, cell.top() + 3);
    }

private Q_SLOTS:
    void init() { makePageOfEvents(); }
    void cleanup() { endPage(); }

    void writesNothingWhileNothingIsKept() {
        open();
        QTest::keyClick(search(), Qt::Key_Escape);
        QTRY_VERIFY(!panel()->isVisible());
        QCOMPARE(rows(), kEvents);
        QVERIFY(!isThere(keptFile()));
    }
    void offersQuestionsInGroupsWithTheirCounts() {
        open();
        QCOMPARE(search()->placeholderText(), name("Find among 0 kept filters and 60 questions"));
        QCOMPARE(offered().first(), name("Disks and file systems"));
        QCOMPARE(current(), name("Disk read and write errors"));
        type("links");
        QTRY_COMPARE(offered(),
                     (QStringList{name("Network"), name("Links down: 0"), name("Links up: 80")}));
        QCOMPARE(current(), name("Links down"));
        QTest::keyClick(search(), Qt::Key_Down);
        QCOMPARE(current(), name("Links up"));
        QCOMPARE(textOf("findSavedTitle"), name("Links up"));
        QCOMPARE(textOf("findSavedAbout"), name("Ports and interfaces that are connected again"));
        QCOMPARE(search()->accessibleDescription(), name("Links up, 80 events"));
        QTest::keyClick(search(), Qt::Key_Down);
        QCOMPARE(current(), name("Links up"));
        QTest::keyClick(search(), Qt::Key_Up);
        QTest::keyClick(search(), Qt::Key_Up);
        QCOMPARE(current(), name("Links down"));
    }
    void saysThatNoQuestionHasTheWords() {
        open();
        type("zeppelin");
        QCOMPARE(offered(), QStringList{name("No filter or question has these words.")});
        QVERIFY(!control("findSavedShow")->isEnabled());
        QTest::keyClick(search(), Qt::Key_Return);
        QVERIFY(panel()->isVisible());
        QTest::keyClick(search(), Qt::Key_Down);
        search()->clear();
        QCOMPARE(current(), name("Disk read and write errors"));
    }
    void goesThroughTheListByPage() {
        open();
        QTest::keyClick(search(), Qt::Key_PageDown);
        QVERIFY(offers()->currentIndex().row() > 5);
        for (int i = 0; i < 12; ++i) {
            QTest::keyClick(search(), Qt::Key_PageDown);
        }
        QCOMPARE(current(), name("Signs of life"));
        for (int i = 0; i < 12; ++i) {
            QTest::keyClick(search(), Qt::Key_PageUp);
        }
        QCOMPARE(current(), name("Disk read and write errors"));
    }
    void countsWhatArrivesAndWhatLeaves() {
        open();
        type("links up");
        QTRY_COMPARE(offered().last(), name("Links up: 80"));
        list().insertRaw(fields("1800000000", "eth0: link is up"));
        QTRY_COMPARE(offered().last(), name("Links up: 81"));
        list().removeRows({{0, 11}});  // one of them is of a disk
        QTRY_COMPARE_WITH_TIMEOUT(offered().last(), name("Links up: 71"), 20000);
    }
    void returnShowsOnlyWhatAQuestionMeans() {
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return);
        QTRY_COMPARE(count(), name("80 of 96 events"));
        QVERIFY(!panel()->isVisible());
        auto *button = control<QAbstractButton>("findSaved");
        QCOMPARE(button->text(), name("Links up"));
        QCOMPARE(button->accessibleName(), name("Questions: Links up"));
        QVERIFY(button->property("inUse").toBool());
        // What else is asked for narrows it.
        find(name("port 7"));
        QTRY_COMPARE(count(), name("9 of 96 events"));
        activate();
        click("findClear");
        QTRY_COMPARE(count(), name("96 events"));
        QCOMPARE(button->text(), name("Questions"));
    }
    void showsAllAgain() {
        open();
        type("links up");
        press("findSavedShow");
        QTRY_COMPARE(rows(), 80);
        open();
        QCOMPARE(current(), name("Links up"));
        QCOMPARE(control<QAbstractButton>("findSavedShow")->text(), name("Show all again"));
        press("findSavedShow");
        QTRY_COMPARE(rows(), kEvents);
        QVERIFY(!control("findSaved")->property("inUse").toBool());
    }
    void canBeChosenThoughItMeansNoEvent() {
        open();
        type("disk full");
        QTRY_COMPARE(offered().last(), name("Disk full: 0"));
        QTest::keyClick(search(), Qt::Key_Return);
        QTRY_COMPARE(count(), name("0 of 96 events"));
        list().insertRaw(fields("1800000000", "no space left on device"));
        QTRY_COMPARE(count(), name("1 of 97 events"));
    }
    void isNamedAmongTheConditionsWhenNothingIsFound() {
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return);
        find(name("sdb"));
        QTRY_COMPARE(rows(), 0);
        // The one that leaves the most out is offered to be dropped.
        QTRY_VERIFY(std::ranges::any_of(
            m_page->findChildren<QAbstractButton *>(), [](const QAbstractButton *button) {
                return button->isVisible() && button->text().contains(name("“sdb”: 80"));
            }));
    }
    void keepsTheFilterInUse() {
        find(name("sdb"));
        QTRY_COMPARE(rows(), 16);
        keepFilter("My disks");
        QVERIFY(panel()->isVisible());
        QCOMPARE(keptText(), "Quorbel filters 1\n\nfilter My disks\ncontains sdb\n");
        QCOMPARE(current(), name("My disks"));
        QTRY_COMPARE(offered()[1], name("My disks: 16"));
        QCOMPARE(offered()[0], name("Kept filters"));
        QCOMPARE(textOf("findSavedAbout"), name("contains “sdb”"));
        close();
        click("findClear");
        QTRY_COMPARE(rows(), kEvents);
        open();
        QTest::keyClick(search(), Qt::Key_Return);
        QTRY_COMPARE(rows(), 16);
        QCOMPARE(control<QAbstractButton>("findSaved")->text(), name("My disks"));
    }
    void aKeptSpanGoesOnWithTheTime() {
        auto *span = m_page->findChild<FindSpan *>();
        QDateTime now = noon();
        span->setClock([&now] { return now; });
        choose("findSpan", name("Today"));
        QTRY_COMPARE(rows(), 49);
        keepFilter("My day");
        QCOMPARE(keptText(), "Quorbel filters 1\n\nfilter My day\ntime today\n");
        QTRY_COMPARE(offered()[1], name("My day: 49"));
        QCOMPARE(textOf("findSavedAbout"), name("today"));
        close();
        click("findClear");
        QTRY_COMPARE(rows(), kEvents);
        now = now.addDays(-1);
        open();
        QTRY_COMPARE(offered()[1], name("My day: 47"));
        now = now.addDays(-1);
        QTRY_COMPARE(offered()[1], name("My day: 0"));
        now = now.addDays(1);
        QTest::keyClick(search(), Qt::Key_Return);
        QTRY_COMPARE(rows(), 47);
        // The bar's own span narrows it.
        choose("findSpan", name("Yesterday"));
        QTRY_COMPARE(rows(), 0);
        choose("findSpan", name("Any time"));
        QTRY_COMPARE(rows(), 47);
        now = now.addDays(1);
        span->follow();
        QTRY_COMPARE(rows(), 49);
        now = now.addDays(1);
        span->follow();
        QTRY_COMPARE(rows(), 0);
        now = now.addDays(-1);  // somebody sets the clock
        span->follow();
        QTRY_COMPARE(rows(), 49);
    }
    void marksOfASpanGoOnWithTheTime() {
        auto *span = m_page->findChild<FindSpan *>();
        QDateTime now = noon();
        span->setClock([&now] { return now; });
        SavedFilter lastHour;
        lastHour.name = "Fresh";
        lastHour.query.spans.set(static_cast<std::size_t>(MovingSpan::kLastHour));
        lastHour.mark = MarkColour::kTeal;
        SavedFilterStore store(keptFile());
        QCOMPARE(store.keep(lastHour), std::string());
        open();
        close();
        const QRgb teal = lookOf(MarkColour::kTeal).tint;
        QTRY_COMPARE(colourAt(4, 40).rgb(), teal);
        QVERIFY(colourAt(5, 40).rgb() != teal);
        now = now.addSecs(30 * 60);
        span->follow();
        QTRY_VERIFY(colourAt(4, 40).rgb() != teal);
        QCOMPARE(colourAt(2, 40).rgb(), teal);
    }
    void keepsNothingWithoutAFilter() {
        open();
        QVERIFY(!control("findSavedKeep")->isEnabled());
    }
    void saysBeforeANameIsAskedForWhatCannotBeKept() {
        click("findRegex");
        find(name("sdb("));
        QTRY_VERIFY(control("findError")->isVisible());
        open();
        QVERIFY(!control("findSavedKeep")->isEnabled());
        QVERIFY(control("findSavedKeep")->toolTip().contains(name("is no regular expression")));
        close();
        click("findRegex");
        QTest::keyClick(field(), Qt::Key_Escape);
        QTRY_VERIFY(!control("findError")->isVisible());
        for (int i = 0; i < 16; ++i) {
            add(qPrintable(QString(i + 1, u'd')));
        }
        open();
        QVERIFY(control("findSavedKeep")->isEnabled());
        close();
        add("disk");
        open();
        QVERIFY(!control("findSavedKeep")->isEnabled());
        QCOMPARE(control("findSavedKeep")->toolTip(),
                 name("No more than 16 texts can be kept together"));
    }
    void tellsHowManyFiltersAreKept() {
        const auto hint = [this] {
            open();
            const QString text = search()->placeholderText();
            close();
            return text;
        };
        QVERIFY2(hint().startsWith(name("Find among 0 kept filters and ")), qPrintable(hint()));
        find(name("sdb"));
        keepFilter("One");
        close();
        QVERIFY2(hint().startsWith(name("Find among 1 kept filter and ")), qPrintable(hint()));
        keepFilter("Two");
        close();
        QVERIFY2(hint().startsWith(name("Find among 2 kept filters and ")), qPrintable(hint()));
    }
    void renamesAndDeletes() {
        find(name("sdb"));
        keepFilter("A & B");
        press("findSavedMore");
        pick("renameFilter");
        QCOMPARE(control<QLineEdit>("findSavedName")->text(), name("A & B"));
        QTest::keyClicks(control("findSavedName"), name("C"));
        press("findSavedOk");
        QTRY_COMPARE(current(), name("C"));
        QVERIFY(keptText().find("filter C\n") != std::string::npos);
        press("findSavedMore");
        pick("deleteFilter");
        QCOMPARE(textOf("findSavedQuestion"), name("Delete the kept filter “C”?"));
        press("findSavedCancel");
        QVERIFY(keptText().find("filter C\n") != std::string::npos);
        press("findSavedMore");
        pick("deleteFilter");
        press("findSavedOk");
        QCOMPARE(keptText(), "Quorbel filters 1\n");
        QCOMPARE(offered().first(), name("Disks and file systems"));
        // A question that comes with the program stays.
        press("findSavedMore");
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(!menu->actions().first()->isEnabled());
        menu->close();
    }
    void isCalledByItsNewNameAndByNoneOnceDeleted() {
        const auto *button = control<QAbstractButton>("findSaved");
        find(name("sdb"));
        keepFilter("My disks");
        close();
        click("findClear");
        open();
        QTest::keyClick(search(), Qt::Key_Return);
        QTRY_COMPARE(rows(), 16);
        QCOMPARE(button->text(), name("My disks"));
        open();
        press("findSavedMore");
        pick("renameFilter");
        QTest::keyClicks(control("findSavedName"), name("Disks"));
        press("findSavedOk");
        QCOMPARE(button->text(), name("Disks"));
        QCOMPARE(button->accessibleName(), name("Questions: Disks"));
        QCOMPARE(current(), name("Disks"));
        QCOMPARE(control<QAbstractButton>("findSavedShow")->text(), name("Show all again"));
        press("findSavedMore");
        pick("deleteFilter");
        press("findSavedOk");
        QCOMPARE(keptText(), "Quorbel filters 1\n");
        QVERIFY(!button->toolTip().contains(name("Disks")));
        QCOMPARE(button->text(), name("Unnamed filter"));
        close();
        QCOMPARE(rows(), 16);
        QCOMPARE(count(), name("16 of 96 events"));
        click("findClear");
        QTRY_COMPARE(rows(), kEvents);
        QCOMPARE(button->text(), name("Questions"));
    }
    void keepsTheNameOfAQuestionWhileOthersAreRenamedAndDeleted() {
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return);
        QTRY_VERIFY(count().contains(name(" of ")));
        keepFilter("Another");
        press("findSavedMore");
        pick("renameFilter");
        QTest::keyClicks(control("findSavedName"), name("Links up"));
        press("findSavedOk");
        press("findSavedMore");
        pick("deleteFilter");
        press("findSavedOk");
        QCOMPARE(control<QAbstractButton>("findSaved")->text(), name("Links up"));
    }
    void returnPressesTheButtonThatHasTheFocus() {
        const auto pressByKey = [this](const char *button) {
            auto *wanted = control(button);
            for (int i = 0; i < 9 && !wanted->hasFocus(); ++i) {
                QTest::keyClick(panel()->focusWidget(), Qt::Key_Tab);
            }
            QVERIFY2(wanted->hasFocus(), button);
            QTest::keyClick(wanted, Qt::Key_Return);
        };
        find(name("sdb"));
        QTRY_COMPARE(rows(), 16);
        open();
        pressByKey("findSavedKeep");
        QTRY_VERIFY(control("findSavedName")->hasFocus());
        QTest::keyClicks(control("findSavedName"), name("Disks"));
        pressByKey("findSavedCancel");
        QTRY_VERIFY(search()->hasFocus());
        QCOMPARE(keptText(), std::string());
        pressByKey("findSavedKeep");
        QTest::keyClicks(control("findSavedName"), name("Disks"));
        pressByKey("findSavedOk");
        QVERIFY(keptText().find("filter Disks\n") != std::string::npos);
        QVERIFY(panel()->isVisible());
        pressByKey("findSavedMark");
        pick("Teal");
        QVERIFY(keptText().find("mark teal\n") != std::string::npos);
        pressByKey("findSavedMore");
        pick("deleteFilter");
        QTRY_VERIFY(control("findSavedCancel")->hasFocus());
        QTest::keyClick(control("findSavedCancel"), Qt::Key_Return);
        QVERIFY(keptText().find("filter Disks\n") != std::string::npos);
        pressByKey("findSavedShow");
        QVERIFY(!panel()->isVisible());
        QCOMPARE(control<QAbstractButton>("findSaved")->text(), name("Disks"));
    }
    void marksRowsInAColour() {
        const QColor before = colourAt(0, 40);
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(panel()->isVisible());
        QVERIFY(keptText().find("filter Links up\n") != std::string::npos);
        QVERIFY(keptText().find("mark violet\n") != std::string::npos);
        close();
        QCOMPARE(rows(), kEvents);
        const MarkLook &violet = lookOf(MarkColour::kViolet);
        QCOMPARE(colourAt(0, 40).rgb(), violet.tint);
        QCOMPARE(colourAt(0, 1).rgb(), violet.line);
        QCOMPARE(colourAt(5, 40), before);  // the last but five is of a disk
        m_page->insertEvent(fields("1800000000", "eth0: link is up"));
        QTRY_COMPARE(colourAt(0, 40).rgb(), violet.tint);
        m_page->insertEvent(fields("1800000000", "eth0: mtu is 9000"));
        QTRY_COMPARE(colourAt(0, 40), before);
    }
    void marksInTheNextStartAndNoLonger() {
        open();
        type("links up");
        press("findSavedMark");
        pick("Teal");
        QVERIFY(keptText().find("mark teal\n") != std::string::npos);
        close();
        const MarkLook &teal = lookOf(MarkColour::kTeal);
        QTRY_COMPARE(colourAt(0, 40).rgb(), teal.tint);
        open();
        QCOMPARE(current(), name("Links up"));  // the kept one
        QVERIFY(offers()
                    ->currentIndex()
                    .data(Qt::AccessibleTextRole)
                    .toString()
                    .contains(name("marks rows")));
        QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(keptText().find("mark "), std::string::npos);
        close();
        QVERIFY(colourAt(0, 40).rgb() != teal.tint);
    }
    void theKeyTakesAQuestionsMarkOffAgain() {
        open();
        type("links up");
        press("findSavedMark");
        pick("No colour");
        QCOMPARE(keptText(), std::string());  // nothing to keep it for
        for (const bool isMarked : {true, false, true}) {
            QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
            QCOMPARE(keptText().find("mark violet\n") != std::string::npos, isMarked);
        }
        press("findSavedMark");
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu != nullptr);
        QVERIFY(menu->actions().first()->isChecked());
        QCOMPARE(menu->layoutDirection(), m_page->layoutDirection());
        menu->close();
    }
    void marksInAnotherColourWhatWasLookedAtBefore() {
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
        close();
        QCOMPARE(colourAt(0, 40).rgb(), lookOf(MarkColour::kViolet).tint);
        SavedFilter disks;
        disks.name = "Disks";
        disks.query.texts.push_back({{"sdb1", false, false}, false});
        disks.mark = MarkColour::kTeal;
        SavedFilterStore store(keptFile());
        QCOMPARE(store.keep(disks), std::string());
        open();
        close();
        QCOMPARE(colourAt(5, 40).rgb(), lookOf(MarkColour::kTeal).tint);
    }
    void tellsScreenReadersWhichFiltersMarkARow() {
        QAccessibleInterface *rows = QAccessible::queryAccessibleInterface(table());
        const auto description = [rows](int row) {
            return rows->tableInterface()->cellAt(row, 4)->text(QAccessible::Description);
        };
        QCOMPARE(description(0), QString());
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
        SavedFilter all;
        all.name = "All of them";
        all.query.host = "*";
        all.mark = MarkColour::kTeal;
        SavedFilterStore store(keptFile());
        QCOMPARE(store.keep(all), std::string());
        close();
        open();
        close();
        QTRY_COMPARE(description(0), name("Marked by Links up, All of them"));
        QCOMPARE(description(5), name("Marked by All of them"));
    }
    void namesTheMarkInTheRow() {
        open();
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
        close();
        const QRect cell = table()->visualRect(table()->model()->index(0, 4));
        const QPoint pill(cell.right() - 20, cell.center().y());
        QHelpEvent help(QEvent::ToolTip, pill, table()->viewport()->mapToGlobal(pill));
        QApplication::sendEvent(table()->viewport(), &help);
        QTRY_VERIFY(QToolTip::text().contains(name("Links up")));
        QToolTip::hideText();
        // A selected row keeps its colour, the bar and the name.
        clickRow(0);
        QVERIFY(colourAt(0, 40).rgb() != lookOf(MarkColour::kViolet).tint);
        QCOMPARE(colourAt(0, 1).rgb(), lookOf(MarkColour::kViolet).line);
    }
    void theMarksNameGrowsWithTheFont() {
        const QString whole = name("Interfaces of the core switch, on both sides of the house");
        find(name("sdb"));
        keepFilter(whole.toUtf8().constData());
        press("findSavedMark");
        pick("Teal");
        close();
        m_page->resize(2400, 600);
        // The pill alone is white.
        const auto pill = [this] {
            const QRect cell = table()->visualRect(table()->model()->index(0, 4));
            const QImage row = table()->viewport()->grab(cell).toImage();
            int left = 0;
            while (left < row.width() && row.pixelColor(left, row.height() / 2) != Qt::white) {
                ++left;
            }
            return QRect(left, 0, row.width() - left, row.height()).translated(cell.topLeft());
        };
        const auto inCharacters = [&] {
            QFont font = table()->font();
            font.setPointSizeF(font.pointSizeF() * 0.85);
            return pill().width() / QFontMetrics(font).averageCharWidth();
        };
        const int usual = inCharacters();
        QVERIFY2(usual > 20 && usual < 30, qPrintable(QString::number(usual)));
        QFont large = table()->font();
        large.setPointSize(3 * large.pointSize());
        table()->setFont(large);
        table()->verticalHeader()->setDefaultSectionSize(QFontMetrics(large).height() + 12);
        QCoreApplication::processEvents();
        QVERIFY2(std::abs(inCharacters() - usual) <= 3,
                 qPrintable(QString::number(inCharacters())));
        // What has no room is told.
        const QPoint place(pill().left() + 10, pill().center().y());
        QHelpEvent help(QEvent::ToolTip, place, table()->viewport()->mapToGlobal(place));
        QApplication::sendEvent(table()->viewport(), &help);
        QTRY_VERIFY2(QToolTip::text().contains(whole), qPrintable(QToolTip::text()));
        QToolTip::hideText();
        const QModelIndex index = table()->model()->index(0, 4);
        QCOMPARE(index.data(Qt::AccessibleDescriptionRole).toString(), name("Marked by ") + whole);
    }
    void tellsWhichLineOfTheKeptFileIsWrong() {
        const std::string text = "Quorbel filters 1\nfilter A\nsound loud\n";
        QVERIFY(replaceFile(keptFile(), text, 0600));
        activate();
        QTest::keyClick(m_page.get(), Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QVERIFY(alert()->informativeText().contains(name("QuorbelFilters.txt, line 3: \"sound\"")));
        QTest::mouseClick(alert()->buttons().first(), Qt::LeftButton);
        QTRY_VERIFY(panel()->isVisible());
        type("links up");
        QTest::keyClick(search(), Qt::Key_Return, Qt::ControlModifier);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QVERIFY(!panel()->isVisible());
        QCOMPARE(keptText(), text);
    }
    void showsWhatAnotherWindowHasKept() {
        SavedFilter other;
        other.name = "Theirs";
        other.query.host = "fs0*";
        SavedFilterStore store(keptFile());
        QCOMPARE(store.keep(other), std::string());
        open();
        QTRY_COMPARE(offered()[1], name("Theirs: 48"));
        QCOMPARE(textOf("findSavedAbout"), name("host fs0*"));
    }
    void exportsAndImports() {
        find(name("sdb"));
        keepFilter("Mine");
        press("findSavedMore");
        pick("exportFilters");
        const TemporaryFolder folder;
        const auto file = folder.path() / "x.txt";
        const auto answerPanel = [&] {
            QTRY_VERIFY(m_page->findChild<QFileDialog *>(name("filePanel")) != nullptr);
            auto *dialog = m_page->findChild<QFileDialog *>(name("filePanel"));
            QTRY_VERIFY(dialog->isVisible());
            auto *fileName = dialog->findChild<QLineEdit *>(name("fileNameEdit"));
            fileName->setText(QString::fromStdString(file.string()));
            QTest::keyClick(fileName, Qt::Key_Return);
            QTRY_VERIFY(m_page->findChild<QFileDialog *>(name("filePanel")) == nullptr);
        };
        answerPanel();
        QTRY_COMPARE(readFile(file).value_or(""), keptText());
        folder.write("x.txt", "Quorbel filters 1\nfilter Mine\nhost fs01\nfilter Other\nhost b\n");
        open();
        press("findSavedMore");
        pick("importFilters");
        answerPanel();
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QCOMPARE(alert()->text(), name("2 filters were added"));
        QTest::mouseClick(alert()->buttons().first(), Qt::LeftButton);
        QTRY_VERIFY(panel()->isVisible());
        QCOMPARE(offered().mid(0, 4).join(u'|').remove(QRegularExpression(name(": [0-9…]+"))),
                 name("Kept filters|Mine|Mine (2)|Other"));
        close();
        folder.write("x.txt", "Quorbel filters 1\nfilter Mine\nhost\n");
        const std::string before = keptText();
        open();
        press("findSavedMore");
        pick("importFilters");
        answerPanel();
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QVERIFY(alert()->informativeText().contains(name("x.txt, line 3: \"host\" needs a value")));
        QCOMPARE(keptText(), before);
    }
    void losesItsLabelFirstAndFitsTheScreen() {
        auto *button = control<QAbstractButton>("findSaved");
        QCOMPARE(button->text(), name("Questions"));
        m_page->resize(600, 420);
        QCoreApplication::processEvents();
        open();
        QCOMPARE(button->text(), QString());
        QCOMPARE(button->accessibleName(), name("Questions"));
        // This display gives every window a frame.
        const QRect screen = button->screen()->availableGeometry().adjusted(-4, -4, 4, 4);
        QVERIFY(screen.contains(panel()->geometry()));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::QuestionsPageTest)
#include "QuestionsPageTest.moc"
