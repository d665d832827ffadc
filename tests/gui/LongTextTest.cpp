#include "platform/gui/LongText.h"
#include "platform/gui/QtText.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include <memory>

namespace quorbel {

class LongTextTest : public QObject {
    Q_OBJECT

private:
    static QString copied() { return QGuiApplication::clipboard()->text(); }
    static QString spoofed() { return toQString("\uFEFFuser \u202Etoor\u202C"); }
    template <typename Widget>
    Widget *shown(const QString &text) {
        auto widget = std::make_unique<Widget>();
        Widget *result = widget.get();
        widget->resize(400, 200);
        widget->setWholeText(text);
        widget->show();
        widget->grab();  // lays out what is seen
        m_widget = std::move(widget);
        return result;
    }
    static void copy(QWidget *widget) { QTest::keySequence(widget, QKeySequence::Copy); }
    // Triggers "Copy" in the menu under the right button.
    static void copyByMenu(QWidget *widget) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                                widget->mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(widget, &event);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu != nullptr);
        QAction *action = menu->actions().value(0);
        QVERIFY(action != nullptr && action->text().startsWith(QStringLiteral("&Copy")));
        QVERIFY(action->isEnabled());
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
    }

private Q_SLOTS:
    void init() { QGuiApplication::clipboard()->setText(QStringLiteral("before")); }
    void cleanup() { m_widget.reset(); }

    void onlyWhatIsLookedAtIsLaidOut_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("unbroken") << QString(1'000'000, u'x');
        QTest::newRow("words") << QStringLiteral("lorem ipsum ").repeated(80'000);
        QTest::newRow("lines") << QString(1'000'000, u'\n');
        QTest::newRow("unseen") << toQString("\u202E").repeated(300'000);
    }
    void onlyWhatIsLookedAtIsLaidOut() {
        QFETCH(QString, text);
        auto *view = shown<LongTextView>(text);
        QCOMPARE(view->wholeText(), text);
        QVERIFY(view->document()->characterCount() < 600'000);
        for (QTextBlock block = view->document()->begin(); block.isValid(); block = block.next()) {
            QVERIFY(block.length() < 8'300);
        }
        auto *field = shown<LongTextField>(text);
        QCOMPARE(field->wholeText(), text);
        QVERIFY(field->text().size() < 70'000);
    }

    void allIsCopiedHoweverLittleIsShown() {
        const QString text = spoofed() + QString(1'000'000, u'x') + QStringLiteral("\nthe end");
        auto *view = shown<LongTextView>(text);
        QTest::keySequence(view, QKeySequence::SelectAll);
        copy(view);
        QVERIFY(copied() == text);
        auto *field = shown<LongTextField>(text);
        QTest::keySequence(field, QKeySequence::SelectAll);
        copy(field);
        QVERIFY(copied() == text);
    }

    void scrollingLeadsToTheEnd() {
        auto *view = shown<LongTextView>(QString(300'000, u'x') + QStringLiteral("\nthe end"));
        QCOMPARE(view->verticalScrollBar()->value(), 0);
        QVERIFY(view->toPlainText().endsWith(u'x'));
        const auto atEnd = [view] {
            view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum());
            view->grab();
            return view->toPlainText().endsWith(QStringLiteral("\nthe end"));
        };
        QTRY_VERIFY_WITH_TIMEOUT(atEnd(), 20000);
        QTest::keySequence(view, QKeySequence::SelectAll);
        copy(view);
        QVERIFY(copied() == view->wholeText());
    }

    void unseenCharactersAreMarkedAndCopiedAsTheyAre() {
        auto *view = shown<LongTextView>(spoofed());
        QCOMPARE(view->toPlainText(), QStringLiteral("<U+FEFF>user <U+202E>toor<U+202C>"));
        QTextCursor part = view->textCursor();
        part.setPosition(8);
        part.setPosition(25, QTextCursor::KeepAnchor);
        view->setTextCursor(part);
        copy(view);
        QCOMPARE(copied(), toQString("user \u202Etoor"));

        auto *field = shown<LongTextField>(spoofed());
        QCOMPARE(field->text(), QStringLiteral("<U+FEFF>user <U+202E>toor<U+202C>"));
        QCOMPARE(field->cursorPosition(), 0);
        field->setSelection(8, 17);
        copy(field);
        QCOMPARE(copied(), toQString("user \u202Etoor"));
    }

    void theMenuCopiesTheSame() {
        auto *field = shown<LongTextField>(spoofed());
        field->selectAll();
        copyByMenu(field);
        QCOMPARE(copied(), spoofed());
    }

    void spacesThatDoNotBreakAreCopied() {
        const QString text = toQString("1\u00A0000\nevents");
        auto *view = shown<LongTextView>(text);
        QTest::keySequence(view, QKeySequence::SelectAll);
        copy(view);
        QCOMPARE(copied(), text);
    }

    void nothingIsCopiedWithoutASelection() {
        copy(shown<LongTextView>(spoofed()));
        copy(shown<LongTextField>(spoofed()));
        QCOMPARE(copied(), QStringLiteral("before"));
    }

    void theNextTextBeginsAnew() {
        auto *view = shown<LongTextView>(QString(300'000, u'x'));
        view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum());
        view->setWholeText(QStringLiteral("short"));
        QCOMPARE(view->toPlainText(), QStringLiteral("short"));
        QTest::keySequence(view, QKeySequence::SelectAll);
        copy(view);
        QCOMPARE(copied(), QStringLiteral("short"));
        QVERIFY(view->isReadOnly());
    }

private:
    std::unique_ptr<QWidget> m_widget;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::LongTextTest)
#include "LongTextTest.moc"
