#include "platform/gui/Appearance.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/MnemonicLetters.h"
#include "platform/gui/Sheet.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

namespace {

/// The letters chosen for texts, as "Export...:E Edit:D"; "-" where there is none.
QString chosen(const QStringList &texts, QSet<QChar> taken = {}) {
    const QList<qsizetype> places = chooseLetters(texts, taken);
    QStringList letters;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        letters += places[i] < 0 ? u"-"_s : QString(texts[i][places[i]]);
    }
    return letters.join(u' ');
}

}  // namespace

/// Letters that press buttons and choose entries of menus, of windows made for it.
class MnemonicsTest : public QObject {
    Q_OBJECT

private:
    template <class Button>
    Button *add(const char *text, QWidget *parent = nullptr) {
        auto *button = new Button(parent == nullptr ? m_window.get() : parent);
        button->setText(QString::fromUtf8(text));
        (parent == nullptr ? m_column : parent->layout())->addWidget(button);
        return button;
    }
    void show() const {
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void pressAlt(char letter, Qt::KeyboardModifiers more = {}) const {
        QTest::keyClick(QApplication::activeWindow(), letter, Qt::AltModifier | more);
    }
    [[nodiscard]] static QString keyOf(const QAbstractButton *button) {
        return button->shortcut().toString();
    }
    /// What a button looks like; waits for what is due before.
    static QImage picture(QWidget *widget) {
        QCoreApplication::processEvents();
        return widget->grab().toImage();
    }

    std::unique_ptr<QWidget> m_window;
    QVBoxLayout *m_column = nullptr;

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() {
        m_window = std::make_unique<QWidget>();
        m_column = new QVBoxLayout(m_window.get());
    }
    void cleanup() { m_window.reset(); }

    void chooses_data() {
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QString>("taken");
        QTest::addColumn<QString>("letters");
        const auto add = [](const char *name, const QStringList &texts, const QString &letters,
                            const QString &taken = {}) {
            QTest::newRow(name) << texts << taken << letters;
        };
        add("first letters", {u"Cancel"_s, u"Save"_s}, u"C S"_s);
        add("of later words", {u"Export"_s, u"Export the filters"_s}, u"E t"_s);
        add("of words before others' inner ones", {u"Aa"_s, u"Ab"_s, u"Bcd"_s}, u"A b c"_s);
        add("one gives up its own", {u"Mail"_s, u"M"_s}, u"a M"_s);
        add("one after another", {u"ab"_s, u"bc"_s, u"b"_s, u"a"_s}, u"a c b -"_s);
        add("inner ones", {u"Edit"_s, u"Edit"_s}, u"E d"_s);
        add("taken, whatever the case", {u"find"_s}, u"i"_s, u"F"_s);
        add("none left", {u"Go"_s, u"Go"_s, u"Go"_s}, u"G o -"_s);
        add("no letters", {u"···"_s, u"+2"_s, QString()}, u"- - -"_s);
        add("behind marks", {u"“fs01” now"_s, u"fs"_s}, u"f s"_s);
        add("marked by itself", {u"Copy"_s, u"&Copy"_s}, u"o -"_s);
        add("an ampersand", {u"R&&D"_s, u"R"_s, u"&"_s}, u"D R -"_s);
        add("not of keys", {u"A\tCtrl+B"_s, u"Ab"_s, u"B\tX"_s}, u"A - B"_s);
        add("other alphabets", {u"Öffnen"_s, u"Отмена"_s, u"Открыть"_s}, u"Ö О т"_s);
    }
    void chooses() {
        QFETCH(QStringList, texts);
        QFETCH(QString, taken);
        QFETCH(QString, letters);
        QSet<QChar> inUse;
        for (const QChar letter : taken) {
            inUse.insert(letter);
        }
        QCOMPARE(chosen(texts, inUse), letters);
    }

    void marks() {
        QCOMPARE(markedLetter(u"E&xit"_s), u'X');
        QCOMPARE(markedLetter(u"R&&D &now"_s), u'N');
        QVERIFY(markedLetter(u"R&&D"_s).isNull());
        QVERIFY(markedLetter(u"R&"_s).isNull());
        QCOMPARE(withLetterMarked(u"Save"_s, 2), u"Sa&ve"_s);
        QCOMPARE(withLetterMarked(u"Save"_s, -1), u"Save"_s);
    }

    void altWithALetterPressesAButton() {
        auto *save = add<QPushButton>("Save");
        auto *box = add<QCheckBox>("Send");
        const QSignalSpy saved(save, &QAbstractButton::clicked);
        show();
        QTRY_COMPARE(keyOf(save), u"Alt+S"_s);
        QTRY_COMPARE(keyOf(box), u"Alt+E"_s);
        pressAlt('s');
        QTRY_COMPARE(saved.size(), 1);
        pressAlt('e');
        QTRY_VERIFY(box->isChecked());
        QCOMPARE(saved.size(), 1);
        QCOMPARE(save->text(), u"Save"_s);
    }

    void pushButtonsComeBeforeOthers() {
        auto *box = add<QCheckBox>("Sound");
        auto *tool = add<QToolButton>("Sort");
        auto *push = add<QPushButton>("Save");
        show();
        QTRY_COMPARE(keyOf(push), u"Alt+S"_s);
        QCOMPARE(keyOf(box), u"Alt+O"_s);
        QCOMPARE(keyOf(tool), u"Alt+R"_s);
    }

    void whatStaysComesBeforeWhatIsOnAPage() {
        auto *pages = new QStackedWidget(m_window.get());
        m_column->addWidget(pages);
        for (int i = 0; i < 2; ++i) {
            auto *page = new QWidget(pages);
            new QVBoxLayout(page);
            pages->addWidget(page);
        }
        auto *first = add<QPushButton>("Remove", pages->widget(0));
        auto *second = add<QPushButton>("Run", pages->widget(1));
        auto *stays = add<QToolButton>("Reports");
        show();
        QTRY_COMPARE(keyOf(stays), u"Alt+R"_s);
        QCOMPARE(keyOf(first), u"Alt+E"_s);
        QVERIFY(keyOf(second).isEmpty());
        pages->setCurrentIndex(1);
        QTRY_COMPARE(keyOf(second), u"Alt+U"_s);
        QVERIFY(keyOf(first).isEmpty());
        QCOMPARE(keyOf(stays), u"Alt+R"_s);
    }

    void theMenuBarsLettersAreTaken() {
        auto *bar = new QMenuBar(m_window.get());
        bar->addMenu(u"&File"_s);
        m_column->setMenuBar(bar);
        auto *label = new QLabel(u"&Name"_s, m_window.get());
        auto *field = new QLineEdit(m_window.get());
        label->setBuddy(field);
        m_column->addWidget(label);
        m_column->addWidget(field);
        auto *find = add<QPushButton>("Find");
        show();
        QTRY_COMPARE(keyOf(find), u"Alt+I"_s);
        auto *name = add<QPushButton>("Nn");
        auto *next = add<QPushButton>("Go");
        QTRY_COMPARE(keyOf(next), u"Alt+G"_s);
        QVERIFY(keyOf(name).isEmpty());
    }

    void anotherTextGetsAnotherLetter() {
        auto *button = add<QPushButton>("Stop");
        auto *other = add<QPushButton>("Continue");
        const QSignalSpy clicked(button, &QAbstractButton::clicked);
        show();
        QTRY_COMPARE(keyOf(button), u"Alt+S"_s);
        button->setText(u"Continue"_s);
        QTRY_COMPARE(keyOf(button), u"Alt+C"_s);
        QTRY_COMPARE(keyOf(other), u"Alt+O"_s);
        button->setText(u"Stop"_s);
        button->setText(u"Continue"_s);  // as it was, but Qt forgot the key
        QTRY_COMPARE(keyOf(button), u"Alt+C"_s);
        pressAlt('c');
        QTRY_COMPARE(clicked.size(), 1);
    }

    void anotherTextOutOfSightGetsAnotherLetter() {
        auto *area = new QScrollArea(m_window.get());
        m_column->addWidget(area);
        auto *content = new QWidget;
        new QVBoxLayout(content);
        content->layout()->addWidget(new QLabel(u"above"_s));
        content->layout()->itemAt(0)->widget()->setFixedHeight(5000);
        auto *button = add<QPushButton>("Start", content);
        area->setWidgetResizable(true);
        area->setWidget(content);
        show();
        QTRY_COMPARE(keyOf(button), u"Alt+S"_s);
        QVERIFY(button->visibleRegion().isEmpty());
        button->setText(u"Pause"_s);
        QTRY_COMPARE(keyOf(button), u"Alt+P"_s);
    }

    void whatIsHiddenHasNone() {
        auto *hidden = add<QPushButton>("Save");
        auto *seen = add<QPushButton>("Send");
        show();
        QTRY_COMPARE(keyOf(hidden), u"Alt+S"_s);
        hidden->hide();
        QTRY_COMPARE(keyOf(seen), u"Alt+S"_s);
        QVERIFY(keyOf(hidden).isEmpty());
        hidden->show();
        QTRY_COMPARE(keyOf(seen), u"Alt+E"_s);
        delete hidden;
        QTRY_COMPARE(keyOf(seen), u"Alt+S"_s);
    }

    void aDisabledButtonKeepsItsLetterAndIsNotPressed() {
        auto *save = add<QPushButton>("Save");
        const QSignalSpy saved(save, &QAbstractButton::clicked);
        auto *send = add<QPushButton>("Send");
        const QSignalSpy sent(send, &QAbstractButton::clicked);
        save->setEnabled(false);
        show();
        QTRY_COMPARE(keyOf(save), u"Alt+S"_s);
        pressAlt('s');
        pressAlt('e');
        QTRY_COMPARE(sent.size(), 1);
        QCOMPARE(saved.size(), 0);
    }

    void anotherKeyOfItsOwnStays() {
        auto *save = add<QPushButton>("Save");
        save->setShortcut(QKeySequence::Save);
        const QSignalSpy saved(save, &QAbstractButton::clicked);
        show();
        QTRY_VERIFY(save->findChild<QShortcut *>() != nullptr);
        QCOMPARE(save->shortcut(), QKeySequence(QKeySequence::Save));
        pressAlt('s');
        QTRY_COMPARE(saved.size(), 1);
        QTRY_VERIFY(!save->isDown());
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(saved.size(), 2);
        save->hide();
        QTRY_VERIFY(save->findChild<QShortcut *>()->key().isEmpty());
        QCOMPARE(save->shortcut(), QKeySequence(QKeySequence::Save));
    }

    void anOpenSheetTakesTheLetters() {
        auto *below = add<QPushButton>("Save");
        const QSignalSpy belowPressed(below, &QAbstractButton::clicked);
        show();
        auto *sheet = new Sheet;
        auto *rows = new QVBoxLayout(sheet);
        auto *row = new QWidget(sheet);
        new QHBoxLayout(row);
        rows->addWidget(row);
        auto *above = add<QPushButton>("Save", row);
        const QSignalSpy abovePressed(above, &QAbstractButton::clicked);
        sheet->presentOver(m_window.get());
        QTRY_COMPARE(QApplication::activeWindow(), sheet);
        QTRY_COMPARE(keyOf(above), u"Alt+S"_s);
        QCOMPARE(keyOf(below), u"Alt+S"_s);
        pressAlt('s');
        QTRY_COMPARE(abovePressed.size(), 1);
        QCOMPARE(belowPressed.size(), 0);
    }

    void lettersAreUnderlinedWhileAltIsHeld_data() {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"push", "check", "tool", "navigation"}) {
            QTest::newRow(kind) << QString::fromLatin1(kind);
        }
    }
    void lettersAreUnderlinedWhileAltIsHeld() {
        QFETCH(QString, kind);
        QAbstractButton *button = nullptr;
        if (kind == "check"_L1) {
            button = add<QCheckBox>("Send");
        } else if (kind == "push"_L1) {
            button = add<QPushButton>("Send");
        } else {
            button = add<QToolButton>("Send");
            button->setProperty("role", kind);
        }
        auto *other = add<QLineEdit>("");
        show();
        other->setFocus();
        QTRY_COMPARE(keyOf(button), u"Alt+S"_s);
        const QImage before = picture(button);
        QTest::keyPress(m_window.get(), Qt::Key_Alt, Qt::AltModifier);
        const QImage held = picture(button);
        QVERIFY(held != before);
        // A line below the first letter, and nothing else.
        int rows = 0;
        for (int y = 0; y < held.height(); ++y) {
            int changed = 0;
            for (int x = 0; x < held.width(); ++x) {
                changed += held.pixel(x, y) != before.pixel(x, y) ? 1 : 0;
            }
            QVERIFY(changed <= 2 * button->fontMetrics().horizontalAdvance(u'S'));
            rows += changed > 0 ? 1 : 0;
        }
        QVERIFY2(rows >= 1 && rows <= 3, qPrintable(QString::number(rows)));
        QTest::keyRelease(m_window.get(), Qt::Key_Alt);
        QCOMPARE(picture(button), before);
    }

    void anotherWindowEndsTheUnderlining() {
        auto *button = add<QPushButton>("Send");
        button->setFocusPolicy(Qt::NoFocus);
        auto *field = add<QLineEdit>("");
        show();
        field->setFocus();
        QTRY_COMPARE(keyOf(button), u"Alt+S"_s);
        const QImage before = picture(button);
        QTest::keyPress(m_window.get(), Qt::Key_Alt, Qt::AltModifier);
        QVERIFY(picture(button) != before);
        QEvent leave(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(m_window.get(), &leave);
        QCOMPARE(picture(button), before);
    }

    void entriesOfAMenuHaveLetters() {
        LetteredMenu menu;
        auto *copy = menu.addAction(u"&Copy"_s);
        auto *details = menu.addAction(u"Copy the details\tReturn"_s);
        auto *more = menu.addMenu(new LetteredMenu(u"Colour"_s, &menu));
        auto *off = menu.addAction(u"Delete"_s);
        off->setEnabled(false);
        const QSignalSpy copied(copy, &QAction::triggered);
        const QSignalSpy detailed(details, &QAction::triggered);
        const QSignalSpy deleted(off, &QAction::triggered);
        menu.popup({0, 0});
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        QTest::keyClick(&menu, Qt::Key_E);  // of the entry that is off
        QTest::keyClick(&menu, Qt::Key_T);
        QTRY_VERIFY(!menu.isVisible());
        QCOMPARE(detailed.size(), 1);
        QCOMPARE(deleted.size(), 0);
        QCOMPARE(details->text(), u"Copy the details\tReturn"_s);

        menu.popup({0, 0});
        QTest::keyClick(&menu, Qt::Key_C, Qt::AltModifier);
        QTRY_VERIFY(!menu.isVisible());
        QCOMPARE(copied.size(), 1);

        menu.popup({0, 0});
        QTest::keyClick(&menu, Qt::Key_O);
        QTRY_VERIFY(more->menu()->isVisible());
        more->menu()->close();
        menu.close();
    }

    void entriesOfAMenuAreUnderlined() {
        LetteredMenu lettered;
        QMenu plain;
        for (QMenu *menu : {static_cast<QMenu *>(&lettered), &plain}) {
            menu->addAction(u"Send"_s);
            menu->addAction(u"&Copy"_s);
            menu->popup({0, 0});
            QVERIFY(QTest::qWaitForWindowExposed(menu));
            menu->setActiveAction(nullptr);
        }
        QCOMPARE(lettered.size(), plain.size());
        const QImage with = lettered.grab().toImage();
        const QImage without = plain.grab().toImage();
        const auto entry = [&](const QImage &image, int i) {
            return image.copy(plain.actionGeometry(plain.actions().at(i)));
        };
        QVERIFY(entry(with, 0) != entry(without, 0));
        QCOMPARE(entry(with, 1), entry(without, 1));
        plain.close();
        lettered.close();
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::MnemonicsTest)
#include "MnemonicsTest.moc"
