#include "options/OptionsFixture.h"

#include <QScrollBar>

namespace quorbel {

using namespace testing;

/// The options page without a mouse.
class OptionsKeyboardTest : public QObject {
    Q_OBJECT

private:
    void activate() {
        m->page().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m->page()));
    }

    static void addLists() {
        QTest::addColumn<QByteArray>("list");
        QTest::newRow("include") << QByteArray("includeFilters");
        QTest::newRow("exclude") << QByteArray("excludeFilters");
    }
    QScrollBar *bar() { return m->control<QScrollArea>("scrollView").verticalScrollBar(); }
    // The page with three filters in each list, in a window that shows one of the lists.
    void showSmall(const QByteArray &list) {
        const Array array{filter("a"), filter("b"), filter("c")};
        Dictionary document = fullDocument();
        document.set("includeFiltersArray", array);
        document.set("excludeFiltersArray", array);
        m->show(document);
        m->page().resize(900, 500);
        activate();
        QTRY_VERIFY(bar()->maximum() > 100);
        auto *area = &m->control<QScrollArea>("scrollView");
        area->ensureWidgetVisible(&m->control(list + "Table"));
        area->ensureWidgetVisible(&m->control(list + "Remove"), 0, 0);
        QVERIFY(!m->control(list + "Remove").visibleRegion().isEmpty());
    }

    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() { m = std::make_unique<OptionsPage>(); }
    void cleanup() { m.reset(); }

    void noFieldStartsInEditing() {
        m->show(fullDocument());
        activate();
        QTRY_VERIFY(m->control("optionsBlank").hasFocus());
        m->control("popupSoundFile").setFocus();
        m->show();
        QTRY_COMPARE(m->page().focusWidget()->objectName(), QStringLiteral("optionsBlank"));
    }

    void tabGoesThroughAllControlsInOrder() {
        m->show(fullDocument());
        m->clickRow("includeFiltersTable", 0);
        m->clickRow("excludeFiltersTable", 0);
        m->click("hostsDisplayName");
        m->control("optionsBlank").setFocus();
        QStringList expected{QStringLiteral("hostsDisplayName"),
                             QStringLiteral("definedDateFormat"), QStringLiteral("userDateFormat"),
                             QStringLiteral("userTimeFormat")};
        const auto add = [&expected](const std::string &name) { expected += toQString(name); };
        for (const char *part : kParts) {
            add(named("severity", part));
        }
        for (const char *part : kParts) {
            for (const char *role : {"", "Time", "Units"}) {
                add(named("removal", part, role));
            }
        }
        add("popupEventsDisplay");
        add("popupEventsTime");
        for (const char *part : kParts) {
            add(named("popup", part, "Display"));
        }
        for (const char *name :
             {"popupEventsPlay", "popupSoundFile", "popupSoundBrowse", "popupSoundTry"}) {
            add(name);
        }
        for (const char *part : kParts) {
            add(named("popup", part, "Play"));
        }
        for (const char *list : {"include", "exclude"}) {
            for (const char *control : {"Table", "Add", "Edit", "Remove"}) {
                add(named(list, "Filters", control));
            }
        }
        add("onCancel");
        add("saveButton");
        QStringList order;
        for (qsizetype i = 0; i < expected.size(); ++i) {
            QTest::keyClick(m->page().focusWidget(), Qt::Key_Tab);
            order += m->page().focusWidget()->objectName();
        }
        QCOMPARE(order.join(u'\n'), expected.join(u'\n'));
    }

    void whatTabLeadsToComesIntoSight() {
        m->show(fullDocument());
        m->page().resize(900, 400);
        activate();
        QScrollBar *bar = m->control<QScrollArea>("scrollView").verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 100);
        auto &last = m->control("excludeFiltersAdd");
        QVERIFY(last.visibleRegion().isEmpty());
        m->control("onCancel").setFocus();
        QTest::keyClick(&m->control("onCancel"), Qt::Key_Tab, Qt::ShiftModifier);
        QVERIFY(last.hasFocus());
        QCOMPARE(last.visibleRegion().boundingRect(), last.rect());
        // Nothing moves under the mouse.
        bar->setValue(0);
        last.setFocus(Qt::MouseFocusReason);
        QCOMPARE(bar->value(), 0);
    }

    void removingKeepsTheFocusAtTheList_data() { addLists(); }
    void removingKeepsTheFocusAtTheList() {
        QFETCH(const QByteArray, list);
        showSmall(list);
        const int place = bar()->value();
        m->clickRow(list + "Table", 1);
        m->control(list + "Remove").setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(m->rows(list + "Table"), QStringLiteral("a|c"));
        QVERIFY(m->control(list + "Table").hasFocus());
        QCOMPARE(bar()->value(), place);
        // Pressed once more, it removes nothing, leaves no page and drops no edit.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QVERIFY(m->mainWindow.selected.empty());
        QCOMPARE(m->rows(list + "Table"), QStringLiteral("a|c"));
        QCOMPARE(m->selectedRow(list + "Table"), 1);
        QVERIFY(m->canSave());
        QCOMPARE(bar()->value(), place);
        // The last one can be removed, too, and the focus stays.
        for (const char *left : {"c", ""}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
            m->control(list + "Remove").setFocus();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
            QCOMPARE(m->rows(list + "Table"), QString::fromLatin1(left));
            QVERIFY(m->control(list + "Table").hasFocus());
        }
        QCOMPARE(bar()->value(), place);
        QCOMPARE(at(m->save(), (list + "Array").toStdString()), QStringLiteral("[]"));
    }

    void nothingMovesUnderTheMouseThatRemoves_data() { addLists(); }
    void nothingMovesUnderTheMouseThatRemoves() {
        QFETCH(const QByteArray, list);
        showSmall(list);
        const int place = bar()->value();
        auto &remove = m->control(list + "Remove");
        const QPoint pointer = remove.mapTo(&m->page(), remove.rect().center());
        m->clickRow(list + "Table", 1);
        for (int click = 0; click < 2; ++click) {
            QWidget *under = m->page().childAt(pointer);
            QCOMPARE(under, &remove);
            QTest::mouseClick(under, Qt::LeftButton);
            QCOMPARE(bar()->value(), place);
            QVERIFY(m->control(list + "Table").hasFocus() || remove.hasFocus());
        }
        QCOMPARE(
            m->rows("includeFiltersTable") + u'/' + m->rows("excludeFiltersTable"),
            list == "includeFilters" ? QStringLiteral("a|c/a|b|c") : QStringLiteral("a|b|c/a|c"));
    }

    void theKeyboardSaves() {
        m->show(fullDocument());
        activate();
        m->click("hostsDisplayIP");
        QTest::keyClick(&m->page(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(m->mainWindow.selected.size(), std::size_t{1});
        QCOMPARE(at(m->saved(), "hostsDisplay"), QStringLiteral("false"));
        m->show();
        QTest::keyClick(&m->page(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(!m->control<QAbstractButton>("saveButton").isDown());
        QVERIFY(m->nothingWasSent());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::OptionsKeyboardTest)
#include "OptionsKeyboardTest.moc"
