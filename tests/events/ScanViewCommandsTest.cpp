#include "events/EventSheetFixture.h"
#include "platform/gui/RowCommands.h"
#include "platform/gui/RowCopy.h"

#include <QAction>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <string>

namespace quorbel {

using namespace testing;

namespace {

constexpr char kUntouched[] = "what was copied before";

}  // namespace

class ScanViewCommandsTest : public QObject, private EventSheetFixture {
    Q_OBJECT

    void showActive() {
        show();
        activate();
        table()->setFocus();
    }
    // As a window manager does once an alert has closed.
    void activate() {
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    void add(const char *message, const char *priority = "Local7.Error") {
        list().insertRaw(fields("1700000000", message, priority));
    }
    void press(const QKeySequence &key) { QTest::keySequence(table(), key); }
    void pressCopyMessage() { press(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C)); }
    void selectAll() { press(QKeySequence::SelectAll); }
    // Of more rows than a slice copies.
    void startLongCopy() {
        for (int i = 0; i < 100'000; ++i) {
            add("text");
        }
        showActive();
        selectAll();
        press(QKeySequence::Copy);
    }
    // What is there once a copy has ended; on a busy machine, any takes more than a slice.
    QString clipboard() {
        if (!QTest::qWaitFor([this] { return !rowCopy()->isRunning(); })) {
            return name("still being copied");
        }
        return QGuiApplication::clipboard()->text();
    }
    RowCopy *rowCopy() { return m_page->findChild<RowCommands *>()->findChild<RowCopy *>(); }

    QMenu *menu() {
        for (QMenu *found : table()->findChildren<QMenu *>(name("rowMenu"))) {
            if (found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    void openMenu(const QPoint &place) {
        QTest::mouseClick(table()->viewport(), Qt::RightButton, {}, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                table()->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(table()->viewport(), &event);
        QTRY_VERIFY(menu() != nullptr);
    }
    QStringList menuTexts() {
        QStringList texts;
        for (const QAction *action : menu()->actions()) {
            texts += action->isSeparator() ? name("-")
                                           : (action->isEnabled() ? QString() : name("off ")) +
                                                 action->text().remove(u'&');
        }
        return texts;
    }
    void choose(const char *command) {
        auto *action = m_page->findChild<QAction *>(name(command));
        QVERIFY(action != nullptr);
        QTest::mouseClick(menu(), Qt::LeftButton, {}, menu()->actionGeometry(action).center());
        QTRY_VERIFY(menu() == nullptr);
    }

private Q_SLOTS:
    void init() {
        makePage();
        QGuiApplication::clipboard()->setText(name(kUntouched));
    }
    void cleanup() { endPage(); }

    void copiesWholeRowsAsTheyAreShown() {
        add("first");
        add("second", "Mail.Informational");
        showActive();
        clickRow(0);
        press(QKeySequence::Copy);
        QCOMPARE(clipboard(),
                 name("Normal\t2023-11-14 22:13:20\tMail.Informational\t10.0.0.5\tsecond"));
        selectAll();
        press(QKeySequence::Copy);
        QCOMPARE(clipboard(),
                 name("Normal\t2023-11-14 22:13:20\tMail.Informational\t10.0.0.5\tsecond\n"
                      "Moderate\t2023-11-14 22:13:20\tLocal7.Error\t10.0.0.5\tfirst"));
    }

    void copiesSelectedRowsFromTheTopWhateverTheOrderOfClicks() {
        for (const char *message : {"4", "3", "2", "1", "0"}) {
            add(message);
        }
        showActive();
        clickRow(4);
        clickRow(0, Qt::ControlModifier);
        clickRow(2, Qt::ControlModifier);
        pressCopyMessage();
        QCOMPARE(clipboard(), name("0\n2\n4"));
    }

    void copiesColumnsAsTheyStand() {
        add("text");
        showActive();
        clickRow(0);
        table()->horizontalHeader()->moveSection(4, 0);
        table()->hideColumn(1);
        press(QKeySequence::Copy);
        QCOMPARE(clipboard(), name("text\tModerate\tLocal7.Error\t10.0.0.5"));
    }

    void aRowStaysARow_data() {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("cell");
        QTest::newRow("tab") << name("a\tb") << name("a b");
        QTest::newRow("line feed") << name("a\nb\n") << name("a b ");
        QTest::newRow("carriage return and line feed") << name("a\r\nb") << name("a b");
        QTest::newRow("carriage return") << name("a\rb") << name("a b");
        QTest::newRow("form feed") << name("a\fb\vc") << name("a b c");
        QTest::newRow("other lines") << name("a\u0085b\u2028c\u2029d") << name("a b c d");
        // Painted as "<U+202E>", copied as it is.
        QTest::newRow("turned") << name("a\u202Eb") << name("a\u202Eb");
        QTest::newRow("quotes") << name("\"a\", 'b' \\t") << name("\"a\", 'b' \\t");
        QTest::newRow("empty") << QString() << QString();
        const QString overlong = QString(1'000'000, u'x') + u'y';
        QTest::newRow("overlong") << overlong << overlong;
    }
    void aRowStaysARow() {
        QFETCH(QString, message);
        QFETCH(QString, cell);
        list().insertRaw(fields("1700000000", message.toStdString()));
        add("other");
        showActive();
        clickRow(1);
        press(QKeySequence::Copy);
        QVERIFY(clipboard() ==
                name("Moderate\t2023-11-14 22:13:20\tLocal7.Error\t10.0.0.5\t") + cell);
        // Alone, a message is copied to the letter; among others, each is a line.
        pressCopyMessage();
        QVERIFY(clipboard() == message);
        selectAll();
        pressCopyMessage();
        QVERIFY(clipboard() == name("other\n") + cell);
    }

    void nothingSelectedLeavesTheClipboard() {
        add("text");
        showActive();
        QTest::keyClick(table(), Qt::Key_Down);
        clickRow(0, Qt::ControlModifier);
        QCOMPARE(selected(), QList<int>());
        press(QKeySequence::Copy);
        pressCopyMessage();
        QCOMPARE(clipboard(), name(kUntouched));
    }

    void manyRowsAreCopiedWithoutAStall() {
        constexpr int kRows = 300'000;
        const std::string text(80, 'x');
        for (int i = 0; i < kRows; ++i) {
            list().insertRaw(fields("1700000000", text + std::to_string(i)));
        }
        showActive();
        selectAll();
        QElapsedTimer clock;
        clock.start();
        press(QKeySequence::Copy);
        const qint64 start = clock.elapsed();
        QVERIFY(rowCopy()->isRunning());
        QCOMPARE(QGuiApplication::clipboard()->text(), name(kUntouched));
        QCOMPARE(table()->viewport()->cursor().shape(), Qt::BusyCursor);
        QElapsedTimer whole;
        whole.start();
        qint64 longest = 0;
        int turns = 0;
        QTimer heart;
        clock.restart();
        connect(&heart, &QTimer::timeout, this, [&] {
            longest = std::max(longest, clock.restart());
            if (!rowCopy()->isRunning()) {
                heart.stop();
                return;
            }
            // Arrivals and removals do not disturb it, wherever it is.
            if (++turns == 2) {
                m_page->insertEvent(fields("1700000001", "new"));
                remove(0);
            }
        });
        heart.start(0);
        QTRY_VERIFY_WITH_TIMEOUT(!rowCopy()->isRunning(), 60'000);
        qInfo("%d rows: first slice %lld ms, longest turn %lld ms of %d, %lld ms in all", kRows,
              static_cast<long long>(start), static_cast<long long>(longest), turns,
              static_cast<long long>(whole.elapsed()));
        QVERIFY(turns > 4);
        const QStringList rows = clipboard().split(u'\n');
        QCOMPARE(rows.size(), kRows);
        for (int i = 0; i < kRows; ++i) {
            if (!rows[i].endsWith(u'x' + QString::number(kRows - 1 - i))) {
                QFAIL(qPrintable(rows[i]));
            }
        }
        QVERIFY(table()->viewport()->cursor().shape() != Qt::BusyCursor);
    }

    void whatIsCopiedElsewhereMeanwhileStays() {
        startLongCopy();
        QVERIFY(rowCopy()->isRunning());
        QGuiApplication::clipboard()->setText(name("other"));
        QTRY_VERIFY(!rowCopy()->isRunning());
        QCOMPARE(clipboard(), name("other"));
    }

    void tooMuchIsSaidAndLeavesTheClipboard() {
        add("0123456789");
        add("0123456789");
        showActive();
        selectAll();
        rowCopy()->setMostCharacters(20);
        pressCopyMessage();
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QCOMPARE(alert()->text(), name("Too much to copy"));
        QVERIFY(alert()->informativeText().contains(name("export")));
        QTest::keyClick(alert(), Qt::Key_Escape);
        QTRY_VERIFY(alert() == nullptr);
        QCOMPARE(clipboard(), name(kUntouched));
        activate();
        rowCopy()->setMostCharacters(21);
        pressCopyMessage();
        QCOMPARE(clipboard(), name("0123456789\n0123456789"));
    }

    void rowsThatChangeAtLargeEndTheCopy() {
        startLongCopy();
        QVERIFY(rowCopy()->isRunning());
        list().beginBulkInsert();
        list().endBulkInsert();
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QCOMPARE(alert()->text(), name("Nothing was copied"));
        QVERIFY(!rowCopy()->isRunning());
        QCOMPARE(clipboard(), name(kUntouched));
        QTest::keyClick(alert(), Qt::Key_Escape);
        QTRY_VERIFY(alert() == nullptr);
    }

    void theMenuHoldsTheCommands() {
        add("1");
        add("0");
        showActive();
        openMenu(placeOf(1));
        QCOMPARE(selected(), QList<int>{1});
        QCOMPARE(
            menuTexts(),
            (QStringList{name("Copy"), name("Copy Message"), name("-"), name("Details\tReturn"),
                         name("-"), name("Only This Host"), name("Not This Host"),
                         name("Only Like This"), name("Show Surroundings\tCtrl+Shift+F"), name("-"),
                         name("Exclude Messages Like This..."), name("Automatic Action..."),
                         name("-"), name("Delete...")}));
        QCOMPARE(m_page->findChild<QAction *>(name("copyMessages"))->shortcut(),
                 QKeySequence(name("Ctrl+Shift+C")));
        choose("copyMessages");
        QCOMPARE(clipboard(), name("1"));
        openMenu(placeOf(0));
        choose("copyRows");
        QCOMPARE(clipboard(), name("Moderate\t2023-11-14 22:13:20\tLocal7.Error\t10.0.0.5\t0"));
        openMenu(placeOf(1));
        choose("openDetails");
        QTRY_COMPARE(sheets().size(), 1);
        QCOMPARE(message(), name("1"));
    }

    void anEventIsProposedToFiltersAndActions() {
        add("link 2 down", "Local7.Error");
        add("other", "Kern.Debug");
        showActive();
        for (const auto &[command, page] : {std::pair("excludeLikeThis", Tab::kOptions),
                                            std::pair("actionLikeThis", Tab::kActions)}) {
            openMenu(placeOf(1));
            choose(command);
            QCOMPARE(m_window.opened.back(), std::pair(page, Tab::kEvents));
            QVERIFY(m_window.proposed.back() == (Dictionary{{"Name", "link 2 down"},
                                                            {"IP", "10.0.0.5"},
                                                            {"Message", "link * down"},
                                                            {"Mask", "32"},
                                                            {"Facility", "Local7"},
                                                            {"Severity", "Error"}}));
        }
        QCOMPARE(m_window.proposed.size(), 2);
    }

    void theMenuKeyOpensItAtTheRow() {
        for (int i = 0; i < 100; ++i) {
            add("text");
        }
        showActive();
        clickRow(3);
        for (const int scrolled : {0, 50}) {
            table()->verticalScrollBar()->setValue(scrolled);
            const QPoint asked = table()->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
            QContextMenuEvent event(QContextMenuEvent::Keyboard, asked,
                                    table()->mapToGlobal(asked));
            QCoreApplication::sendEvent(table(), &event);
            QTRY_VERIFY(menu() != nullptr);
            const QRect inSight(table()->viewport()->mapToGlobal(QPoint(0, 0)),
                                table()->viewport()->size());
            QVERIFY(inSight.contains(menu()->geometry().topLeft()));
            QTest::keyClick(menu(), Qt::Key_Down);
            QTest::keyClick(menu(), Qt::Key_Down);
            QTest::keyClick(menu(), Qt::Key_Return);
            QTRY_VERIFY(menu() == nullptr);
            QCOMPARE(clipboard(), name("text"));
            QGuiApplication::clipboard()->setText(name(kUntouched));
        }
    }

    void withoutASelectionTheMenuOffersWhatNeedsNone() {
        add("text");
        showActive();
        openMenu(placeOf(0) + QPoint(0, 200));
        QCOMPARE(menuTexts(),
                 (QStringList{name("off Copy"), name("off Copy Message"), name("-"),
                              name("off Details\tReturn"), name("-"), name("off Only This Host"),
                              name("off Not This Host"), name("off Only Like This"),
                              name("off Show Surroundings\tCtrl+Shift+F"), name("-"),
                              name("off Exclude Messages Like This..."),
                              name("off Automatic Action..."), name("-"), name("Delete...")}));
        QTest::keyClick(menu(), Qt::Key_Escape);
        QTRY_VERIFY(menu() == nullptr);
        activate();
        const auto *copy = m_page->findChild<QAction *>(name("copyMessages"));
        QTRY_VERIFY(copy->isEnabled());
        // The keys work again.
        clickRow(0);
        pressCopyMessage();
        QCOMPARE(clipboard(), name("text"));
    }

    void theMenuMeansTheRowsItWasOpenedOver() {
        showRows(5);
        showActive();
        clickRow(1);
        clickRow(2, Qt::ShiftModifier);
        openMenu(placeOf(2));
        arrive(2);
        QCOMPARE(selected(), QList<int>());
        choose("copyMessages");
        QCOMPARE(clipboard(), name("3\n2"));
        QCOMPARE(selected(), (QList<int>{3, 4}));
        openMenu(placeOf(3));
        arrive(1);
        choose("deleteSelected");
        answer(name("Yes"));
        QCOMPARE(list().size(), std::size_t{6});
        QCOMPARE(list().message(3).value_or(""), "4");
        QCOMPARE(list().message(4).value_or(""), "1");
    }

    void theMenuDoesNothingOnceItsRowsHaveGone() {
        showRows(3);
        showActive();
        openMenu(placeOf(1));
        arrive(1);
        remove(1);
        QTRY_COMPARE(list().size(), std::size_t{3});
        choose("deleteSelected");
        QCoreApplication::processEvents();
        QVERIFY(alert() == nullptr);
        QCOMPARE(list().size(), std::size_t{3});
    }

    void theDeleteKeyAsksAsTheButtonDoes() {
        showRows(3);
        showActive();
        clickRow(1);
        QTest::keyClick(table(), Qt::Key_Delete);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QCOMPARE(alert()->text(), name("Are you sure you want to delete selected events?"));
        answer(name("No"));
        QCOMPARE(list().size(), std::size_t{3});
        activate();
        QTest::keyClick(table(), Qt::Key_Delete);
        answer(name("Yes"));
        QCOMPARE(list().size(), std::size_t{2});
        QCOMPARE(list().message(1).value_or(""), "0");
        QCOMPARE(selected(), QList<int>());
        activate();
        QTest::keyClick(table(), Qt::Key_Delete);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QCOMPARE(alert()->text(), name("No events selected"));
        QCOMPARE(alert()->checkBox()->text(), name("Delete all events"));
        QTest::keyClick(alert(), Qt::Key_Escape);
        QTRY_VERIFY(alert() == nullptr);
        QCOMPARE(list().size(), std::size_t{2});
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewCommandsTest)
#include "ScanViewCommandsTest.moc"
