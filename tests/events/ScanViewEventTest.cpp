#include "events/EventSheetFixture.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTest>

#include <memory>
#include <string>

namespace quorbel {

using namespace testing;

class ScanViewEventTest : public QObject, private EventSheetFixture {
    Q_OBJECT

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() { endPage(); }

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

    void withStepsOfItsOwnItNeedsNoList() {
        showRows(3);
        class Steps : public EventSteps {
        public:
            explicit Steps(EventList &list) : m_list(list) {}
            bool canStep(int direction) override { return m_row + direction == 1; }
            Event step(int direction) override {
                m_row += direction;
                return {m_list, m_list.idAt(static_cast<std::size_t>(m_row))};
            }

        private:
            EventList &m_list;
            int m_row = 2;
        };
        auto details = std::make_unique<ScanViewEvent>();
        details->viewDidLoad();
        details->setSteps(std::make_shared<Steps>(list()));
        details->setDict(Event(list(), list().idAt(2)));
        details.release()->presentOver(m_page.get());
        QCOMPARE(message(), name("0"));
        QCOMPARE(enabled(), (QList<bool>{true, false}));
        press("eventUp");
        QCOMPARE(message(), name("1"));
        QCOMPARE(enabled(), (QList<bool>{false, false}));
        sheet()->onDown();
        QCOMPARE(message(), name("1"));
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

    void copiesTheEventWhereNoTextIsSelected_data() {
        QTest::addColumn<QString>("focus");
        for (const char *control : {"onOK", "eventUp", "eventDate", "eventHost", "eventMessage"}) {
            QTest::newRow(control) << name(control);
        }
    }
    void copiesTheEventWhereNoTextIsSelected() {
        QFETCH(QString, focus);
        list().insertRaw(fields("1700000000", "older"));
        list().insertRaw(fields("1700000000", "one\ttwo\nthree", "Kern.Alert"));
        list().insertRaw(fields("1700000000", "newer"));
        show();
        doubleClickRow(1);
        auto *control = sheet()->findChild<QWidget *>(focus);
        control->setFocus(Qt::OtherFocusReason);
        QGuiApplication::clipboard()->clear();
        QTest::keySequence(control, QKeySequence::Copy);
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 name("2023-11-14 22:13:20\tKern.Alert\t10.0.0.5\tone two three"));
        QTest::keySequence(control, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
        QCOMPARE(QGuiApplication::clipboard()->text(), name("one\ttwo\nthree"));
        // What is shown now counts.
        press("eventDown");
        QTest::keySequence(sheet(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
        QCOMPARE(QGuiApplication::clipboard()->text(), name("older"));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewEventTest)
#include "ScanViewEventTest.moc"
