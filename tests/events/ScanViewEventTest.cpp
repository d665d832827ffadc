#include "events/ScanViewFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTest>
#include <QToolButton>

#include <functional>
#include <optional>
#include <string>

namespace quorbel {

using namespace testing;

class ScanViewEventTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    void showRows(int count) {
        for (int i = 0; i < count; ++i) {
            list().insertRaw(fields(std::to_string(1700000000 + i), std::to_string(i)));
        }
        show();
    }
    QList<ScanViewEvent *> sheets() { return m_page->findChildren<ScanViewEvent *>(); }
    ScanViewEvent *sheet() { return sheets().value(0); }
    // A press and a release more than a double click is made of, as a hand does.
    void doubleClickRow(int row) {
        clickRow(row);
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(row));
        QCOMPARE(sheets().size(), 1);
        QVERIFY(QTest::qWaitForWindowExposed(sheet()));
    }
    void mouse(QEvent::Type type, const QPoint &place) {
        const auto buttons =
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton);
        QWidget *target = table()->viewport();
        QMouseEvent event(type, place, target->mapToGlobal(place), Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(target, &event);
    }
    // A double click as it comes from the window system, with something happening between its two
    // presses.
    void doubleClickRow(int row, const std::function<void()> &meanwhile) {
        const QPoint place = placeOf(row);
        mouse(QEvent::MouseButtonPress, place);
        mouse(QEvent::MouseButtonRelease, place);
        meanwhile();
        mouse(QEvent::MouseButtonDblClick, place);
        mouse(QEvent::MouseButtonRelease, place);
    }
    void arrive(int count) {
        for (int i = 0; i < count; ++i) {
            m_page->insertEvent(fields(std::to_string(1700001000 + i), "new"));
        }
    }
    void remove(int number) {
        m_page->removeEvent(fields(std::to_string(1700000000 + number), std::to_string(number)));
    }
    QString line(const char *edit) { return sheet()->findChild<QLineEdit *>(name(edit))->text(); }
    QString message() {
        return sheet()->findChild<QPlainTextEdit *>(name("eventMessage"))->toPlainText();
    }
    // All of a field, as Select All and Copy give it.
    QString copied(const char *field) {
        auto *widget = sheet()->findChild<QWidget *>(name(field));
        QGuiApplication::clipboard()->clear();
        QTest::keySequence(widget, QKeySequence::SelectAll);
        QTest::keySequence(widget, QKeySequence::Copy);
        return QGuiApplication::clipboard()->text();
    }
    QAbstractButton *button(const char *which) {
        return sheet()->findChild<QAbstractButton *>(name(which));
    }
    void press(const char *which) { QTest::mouseClick(button(which), Qt::LeftButton); }
    QList<bool> enabled() {
        return {button("eventUp")->isEnabled(), button("eventDown")->isEnabled()};
    }

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() {
        m_page.reset();
        m_delegate.reset();
    }

    void aDoubleClickOpensOneSheetWithTheEvent() {
        showRows(3);
        doubleClickRow(1);
        QCOMPARE(sheet()->windowTitle(), name("Quorbel Event"));
        QCOMPARE(sheet()->presenter(), m_page.get());
        QCOMPARE(line("eventDate"), name("2023-11-14 22:13:21"));
        QCOMPARE(line("eventPriority"), name("Local7.Error"));
        QCOMPARE(line("eventHost"), name("10.0.0.5"));
        QCOMPARE(message(), name("1"));
        QCOMPARE(selected(), QList<int>{1});
    }

    void controlsHaveTheirNamesAndAreReadOnly() {
        showRows(1);
        doubleClickRow(0);
        QCOMPARE(sheet()->objectName(), name("eventView"));
        for (const char *control : {"eventDate", "eventPriority", "eventHost", "eventMessage",
                                    "eventUp", "eventDown", "onOK"}) {
            auto *widget = sheet()->findChild<QWidget *>(name(control));
            QVERIFY2(widget != nullptr, control);
            QVERIFY2(!widget->accessibleName().isEmpty(), control);
        }
        for (const QLineEdit *edit : sheet()->findChildren<QLineEdit *>()) {
            QVERIFY(edit->isReadOnly());
        }
        QVERIFY(sheet()->findChild<QPlainTextEdit *>()->isReadOnly());
        QVERIFY(!button("eventUp")->toolTip().isEmpty());
        QVERIFY(!button("eventDown")->toolTip().isEmpty());
        QVERIFY(!button("eventUp")->icon().isNull());
        QVERIFY(!button("eventDown")->icon().isNull());
        QCOMPARE(sheet()->minimumSize(), sheet()->maximumSize());
    }

    void aDoubleClickMeansTheEventUnderItsFirstPress_data() {
        QTest::addColumn<int>("arrivals");
        for (const int arrivals : {0, 1, 4, 100}) {
            QTest::addRow("%d", arrivals) << arrivals;
        }
    }
    void aDoubleClickMeansTheEventUnderItsFirstPress() {
        QFETCH(int, arrivals);
        showRows(5);
        doubleClickRow(2, [&] { arrive(arrivals); });
        QCOMPARE(sheets().size(), 1);
        QCOMPARE(message(), name("2"));
        QCOMPARE(selected(), QList<int>{2 + arrivals});
        const QRect place = table()->visualRect(table()->model()->index(2 + arrivals, 0));
        QVERIFY(table()->viewport()->rect().contains(place.center()));
    }

    void aDoubleClickMeansItWhateverElseGoes() {
        showRows(60);
        doubleClickRow(5, [&] {
            arrive(3);
            for (const int gone : {59, 57, 50, 1}) {
                remove(gone);
            }
            QTRY_COMPARE(list().size(), std::size_t{59});
        });
        QCOMPARE(sheets().size(), 1);
        QCOMPARE(message(), name("54"));
    }

    void aDoubleClickOnAnEventThatGoesMeanwhileOpensNothing_data() {
        QTest::addColumn<bool>("atOnce");
        QTest::newRow("has left the list") << true;
        QTest::newRow("is about to") << false;
    }
    void aDoubleClickOnAnEventThatGoesMeanwhileOpensNothing() {
        QFETCH(bool, atOnce);
        showRows(5);
        doubleClickRow(2, [&] {
            arrive(1);
            remove(2);
            if (atOnce) {
                QTRY_COMPARE(list().size(), std::size_t{5});
            }
        });
        QCOMPARE(sheets().size(), 0);
        QCOMPARE(list().size(), std::size_t{5});
        QCOMPARE(selected(), QList<int>());
    }

    void theSecondPressAloneIsNoDoubleClick() {
        showRows(3);
        doubleClickRow(1, [] {});
        QTest::keyClick(sheet(), Qt::Key_Escape);
        QTRY_COMPARE(sheets().size(), 0);
        // As after a press on the sheet's button.
        mouse(QEvent::MouseButtonDblClick, placeOf(0));
        mouse(QEvent::MouseButtonRelease, placeOf(0));
        QCOMPARE(sheets().size(), 0);
        QCOMPARE(selected(), QList<int>{0});
    }

    void enterOpensWhatWasChosenBeforeEventsArrived() {
        showRows(5);
        clickRow(1);
        QTest::keyClick(table(), Qt::Key_Down);
        arrive(3);
        QCOMPARE(selected(), QList<int>());
        QTest::keyClick(table(), Qt::Key_Return);
        QCOMPARE(sheets().size(), 1);
        QCOMPARE(message(), name("2"));
        QCOMPARE(selected(), QList<int>{5});
        // What was stepped to is chosen, too.
        press("eventDown");
        press("onOK");
        QTRY_COMPARE(sheets().size(), 0);
        arrive(1);
        QTest::keyClick(table(), Qt::Key_Return);
        QCOMPARE(message(), name("1"));
    }

    void enterOpensNothingThatWasGivenUp_data() {
        QTest::addColumn<int>("way");
        QTest::newRow("removed") << 0;
        QTest::newRow("clicked beside the rows") << 1;
        QTest::newRow("deselected") << 2;
        QTest::newRow("page shown again") << 3;
    }
    void enterOpensNothingThatWasGivenUp() {
        QFETCH(int, way);
        showRows(5);
        clickRow(1);
        if (way == 2) {
            clickRow(1, Qt::ControlModifier);
        }
        arrive(1);
        if (way == 0) {
            remove(3);
            QTRY_COMPARE(list().size(), std::size_t{5});
        } else if (way == 1) {
            QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, placeOf(5) + QPoint(0, 100));
        } else if (way == 3) {
            m_page->hide();
            show();
        }
        QTest::keyClick(table(), Qt::Key_Return);
        QCOMPARE(sheets().size(), 0);
    }

    void enterOpensItAndAHeldKeyDoesNot() {
        showRows(2);
        clickRow(1);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QKeyEvent repeated(QEvent::KeyPress, key, Qt::NoModifier, {}, true);
            QCoreApplication::sendEvent(table(), &repeated);
            QCOMPARE(sheets().size(), 0);
            QTest::keyClick(table(), key);
            QCOMPARE(sheets().size(), 1);
            QCOMPARE(message(), name("0"));
            press("onOK");
            QTRY_COMPARE(sheets().size(), 0);
        }
    }

    void nothingOpensWithoutASelection() {
        showRows(2);
        m_page->doubleClickTable();
        QTest::keyClick(table(), Qt::Key_Return);
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier,
                           placeOf(1) + QPoint(0, 100));
        QCOMPARE(sheets().size(), 0);
    }

    void ofSeveralSelectedRowsTheLastOneOpens() {
        showRows(5);
        clickRow(3);
        clickRow(1, Qt::ControlModifier);
        m_page->doubleClickTable();
        QCOMPARE(message(), name("3"));
        // Stepping replaces the selection.
        press("eventDown");
        QCOMPARE(message(), name("2"));
        QCOMPARE(selected(), QList<int>{2});
    }

    void aSingleEntryHasNoNeighbours() {
        showRows(1);
        doubleClickRow(0);
        QCOMPARE(enabled(), (QList<bool>{false, false}));
    }

    void stepsFromTheFirstRowToTheLastAndBack() {
        showRows(3);
        doubleClickRow(0);
        QCOMPARE(enabled(), (QList<bool>{false, true}));
        press("eventDown");
        QCOMPARE(enabled(), (QList<bool>{true, true}));
        QCOMPARE(message(), name("1"));
        QCOMPARE(selected(), QList<int>{1});
        press("eventDown");
        QCOMPARE(enabled(), (QList<bool>{true, false}));
        QCOMPARE(line("eventDate"), name("2023-11-14 22:13:20"));
        press("eventUp");
        press("eventUp");
        QCOMPARE(enabled(), (QList<bool>{false, true}));
        QCOMPARE(message(), name("2"));
        QCOMPARE(selected(), QList<int>{0});
    }

    void aStepBeyondTheEndDoesNothing() {
        showRows(2);
        doubleClickRow(0);
        sheet()->onUp();
        QCOMPARE(message(), name("1"));
        sheet()->onDown();
        sheet()->onDown();
        QCOMPARE(message(), name("0"));
        QCOMPARE(selected(), QList<int>{1});
    }

    void theListScrollsToTheEventShown() {
        showRows(200);
        doubleClickRow(0);
        for (int i = 0; i < 150; ++i) {
            sheet()->onDown();
        }
        QCOMPARE(message(), name("49"));
        const QRect place = table()->visualRect(table()->model()->index(150, 0));
        QVERIFY(table()->viewport()->rect().contains(place.center()));
    }

    void theSelectionStaysWhereSteppingLeftIt() {
        showRows(4);
        doubleClickRow(0);
        press("eventDown");
        press("eventDown");
        press("onOK");
        QTRY_COMPARE(sheets().size(), 0);
        QCOMPARE(selected(), QList<int>{2});
    }

    void escapeClosesItFromEveryControl() {
        showRows(2);
        for (const char *control : {"eventMessage", "eventHost", "onOK"}) {
            doubleClickRow(0);
            auto *focus = sheet()->findChild<QWidget *>(name(control));
            focus->setFocus();
            QTest::keyClick(focus, Qt::Key_Escape);
            QTRY_COMPARE(sheets().size(), 0);
        }
    }

    void theButtonsFollowWhatComesAndGoes() {
        showRows(3);
        doubleClickRow(0);
        QCOMPARE(enabled(), (QList<bool>{false, true}));
        arrive(1);
        QCOMPARE(enabled(), (QList<bool>{true, true}));
        remove(0);
        remove(1);
        QTRY_COMPARE(list().size(), std::size_t{2});
        QCOMPARE(enabled(), (QList<bool>{true, false}));
        press("eventUp");
        QCOMPARE(message(), name("new"));
        QCOMPARE(enabled(), (QList<bool>{false, true}));
        list().removeRows({{1, 1}});
        QCOMPARE(enabled(), (QList<bool>{false, false}));
    }

    void theButtonsFollowAListThatChangesAtLarge() {
        showRows(5);
        doubleClickRow(2);
        QCOMPARE(enabled(), (QList<bool>{true, true}));
        list().removeRows({{0, 2}, {3, 2}});
        QCOMPARE(enabled(), (QList<bool>{false, false}));
        QCOMPARE(message(), name("2"));
    }

    void newEventsMeanwhileAreSteppedOverFromTheEventShown() {
        showRows(3);
        doubleClickRow(1);
        m_page->insertEvent(fields("1700000100", "new"));
        m_page->insertEvent(fields("1700000101", "newer"));
        QCOMPARE(selected(), QList<int>());
        QCOMPARE(message(), name("1"));
        press("eventDown");
        QCOMPARE(message(), name("0"));
        QCOMPARE(selected(), QList<int>{4});
        m_page->insertEvent(fields("1700000102", "newest"));
        press("eventUp");
        QCOMPARE(message(), name("1"));
        QCOMPARE(selected(), QList<int>{4});
    }

    void anEventRemovedMeanwhileStaysReadableAndLeavesItsPlace_data() {
        QTest::addColumn<bool>("up");
        QTest::addColumn<QString>("next");
        QTest::newRow("up") << true << "3";
        QTest::newRow("down") << false << "1";
    }
    void anEventRemovedMeanwhileStaysReadableAndLeavesItsPlace() {
        QFETCH(bool, up);
        QFETCH(QString, next);
        showRows(5);
        doubleClickRow(2);
        m_page->removeEvent(fields("1700000002", "2"));
        QTRY_COMPARE(list().size(), std::size_t{4});
        QCOMPARE(message(), name("2"));
        press(up ? "eventUp" : "eventDown");
        QCOMPARE(message(), next);
        QCOMPARE(cell(selected().value(0), 4), next);
    }

    void newEventsMoveThePlaceThatARemovedOneLeaves_data() {
        anEventRemovedMeanwhileStaysReadableAndLeavesItsPlace_data();
    }
    void newEventsMoveThePlaceThatARemovedOneLeaves() {
        QFETCH(bool, up);
        QFETCH(QString, next);
        showRows(5);
        doubleClickRow(2);
        for (const char *later : {"new", "newer", "newest"}) {
            m_page->insertEvent(fields("1700000100", later));
        }
        m_page->removeEvent(fields("1700000002", "2"));
        QTRY_COMPARE(list().size(), std::size_t{7});
        QCOMPARE(selected(), QList<int>());
        QCOMPARE(message(), name("2"));
        press(up ? "eventUp" : "eventDown");
        QCOMPARE(message(), next);
        QCOMPARE(cell(selected().value(0), 4), next);
    }

    void theOldestEventRemovedMeanwhileHasNoneBelow() {
        showRows(2);
        doubleClickRow(1);
        m_page->insertEvent(fields("1700000100", "new"));
        m_page->removeEvent(fields("1700000000", "0"));
        QTRY_COMPARE(list().size(), std::size_t{2});
        sheet()->onDown();
        QCOMPARE(message(), name("0"));
        press("eventUp");
        QCOMPARE(message(), name("1"));
    }

    void aListThatEmptiesMeanwhileHasNowhereToStepTo() {
        showRows(3);
        doubleClickRow(1);
        list().removeRows({{0, 3}});
        press("eventUp");
        QCOMPARE(message(), name("1"));
        QCOMPARE(enabled(), (QList<bool>{false, false}));
        sheet()->onDown();
        QCOMPARE(message(), name("1"));
        QCOMPARE(line("eventDate"), name("2023-11-14 22:13:21"));
    }

    void aSheetThatIsOpenGoesWithItsPage() {
        showRows(3);
        doubleClickRow(1);
        const QPointer<ScanViewEvent> open = sheet();
        m_page.reset();
        QVERIFY(open.isNull());
    }

    void withoutButtonsItShowsTheEventAlone() {
        showRows(3);
        QWidget popup;
        popup.show();
        for (QWidget *presenter : {&popup, static_cast<QWidget *>(m_page.get())}) {
            auto details = std::make_unique<ScanViewEvent>();
            details->viewDidLoad();
            details->setHideButtons(true);
            details->setDict(Event(list(), list().idAt(1)));
            const QPointer<ScanViewEvent> open = details.release();
            open->presentOver(presenter);
            QVERIFY(open->isVisible());
            QVERIFY(!open->findChild<QWidget *>(name("eventUp"))->isVisible());
            QVERIFY(!open->findChild<QWidget *>(name("eventDown"))->isVisible());
            QCOMPARE(open->findChild<QPlainTextEdit *>()->toPlainText(), name("1"));
            open->onDown();
            QCOMPARE(open->findChild<QPlainTextEdit *>()->toPlainText(), name("1"));
            open->onCancel();
            QTRY_VERIFY(open.isNull());
        }
        QCOMPARE(selected(), QList<int>());
    }

    void texts_data() {
        QTest::addColumn<QString>("priority");
        QTest::addColumn<QString>("text");
        QTest::newRow("several lines") << "Kern.Alert"
                                       << "one\ntwo\n\nfour";
        QTest::newRow("64 KiB") << "Kern.Alert" << QString(65536, u'x');
        QTest::newRow("right to left") << "Kern.Alert" << name("שלום עולם, مرحبا");
        QTest::newRow("emoji") << "Kern.Alert" << name("disk 💾 is 🔥 👩‍👩‍👧");
        QTest::newRow("markup") << "Kern.Alert"
                                << "<b>bold</b> & <img src='x'>";
        QTest::newRow("priority without a point") << "Kern"
                                                  << "m";
        QTest::newRow("empty") << ""
                               << "";
    }
    void texts() {
        QFETCH(QString, priority);
        QFETCH(QString, text);
        const std::string bytes = text.toStdString();
        const std::string level = priority.toStdString();
        list().insertRaw({"1700000000", level, bytes, bytes, {}});
        show();
        QCOMPARE(cell(0, 2), priority);
        QCOMPARE(cell(0, 4), text);
        doubleClickRow(0);
        QCOMPARE(message().remove(u'\n'), QString(text).remove(u'\n'));
        QCOMPARE(copied("eventMessage"), text);
        QCOMPARE(line("eventPriority"), priority);
        if (!text.contains(u'\n')) {
            QCOMPARE(line("eventHost"), text);
        }
        QCOMPARE(copied("eventHost"), text);
        QVERIFY(sheet()->width() < 800);
    }

    void aLongFieldIsSeenFromItsBeginning() {
        const std::string host(5000, 'h');
        list().insertRaw({"1700000000", "Kern.Alert", host, "m", {}});
        show();
        doubleClickRow(0);
        QCOMPARE(sheet()->findChild<QLineEdit *>(name("eventHost"))->cursorPosition(), 0);
    }

    void whatASenderHidesIsMarkedAndCopiedToTheLetter() {
        const std::string host = "\uFEFF10.0.0.5";
        const std::string text = "user \u202Etoor\u202C\u2028logged\u200B in";
        list().insertRaw({"1700000000", "Kern.Alert", host, text, {}});
        show();
        QCOMPARE(cell(0, 3).toStdString(), host);
        QCOMPARE(cell(0, 4).toStdString(), text);
        doubleClickRow(0);
        QCOMPARE(line("eventHost"), name("<U+FEFF>10.0.0.5"));
        QCOMPARE(message(), name("user <U+202E>toor<U+202C><U+2028>logged<U+200B> in"));
        QCOMPARE(copied("eventHost").toStdString(), host);
        QCOMPARE(copied("eventMessage").toStdString(), text);
    }

    void aHugeMessageIsCopiedAsAWhole_data() {
        QTest::addColumn<QString>("piece");
        QTest::newRow("unbroken") << "x";
        QTest::newRow("words") << "lorem ipsum ";
        QTest::newRow("lines") << "\n";
    }
    void aHugeMessageIsCopiedAsAWhole() {
        QFETCH(QString, piece);
        const QString text = piece.repeated(1'000'000 / piece.size());
        const std::string bytes = text.toStdString();
        list().insertRaw({"1700000000", bytes, bytes, bytes, {}});
        show();
        doubleClickRow(0);
        for (const char *field : {"eventPriority", "eventHost", "eventMessage"}) {
            QVERIFY2(copied(field) == text, field);
        }
    }

    void missingFieldsAreEmpty() {
        list().insertRaw({std::nullopt, "Kern.Alert", std::nullopt, std::nullopt, {}});
        list().insertRaw(fields("1700000000"));
        show();
        doubleClickRow(0);
        press("eventDown");
        QCOMPARE(line("eventPriority"), name("Kern.Alert"));
        QCOMPARE(line("eventHost"), QString());
        QCOMPARE(message(), QString());
    }

    void anUnknownSheetOpensNothing() {
        showRows(1);
        m_storyboard = Storyboard();
        clickRow(0);
        m_page->doubleClickTable();
        QCOMPARE(sheets().size(), 0);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewEventTest)
#include "ScanViewEventTest.moc"
