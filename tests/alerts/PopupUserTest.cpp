#include "alerts/AlertFixture.h"
#include "alerts/PopupHold.h"
#include "platform/gui/Appearance.h"
#include "support/WaitUntil.h"

#include <QCursor>
#include <QDateTime>
#include <QDialog>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <memory>
#include <string>

using namespace quorbel;
using namespace quorbel::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = kPatience.count();

/// A field that has a use for Esc.
class EscapeField : public QLineEdit {
public:
    int escapes = 0;

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->key() == Qt::Key_Escape) {
            ++escapes;
        } else {
            QLineEdit::keyPressEvent(event);
        }
    }
};

QWidget &control(PopupWindow &window, const char *name) {
    return *window.findChild<QWidget *>(QString::fromLatin1(name));
}

bool isOpen(PopupWindow &window) {
    return QTest::qWaitFor([&window] { return window.height() == window.contentView().height(); },
                           kPatienceMs);
}

/// Moves the pointer over the popup, as a hand does it: in several steps.
void moveOver(PopupWindow &window, int from = 100) {
    for (int step = 0; step < 3; ++step) {
        QCursor::setPos(window.mapToGlobal(QPoint(from + 5 * step, 60)));
        QCoreApplication::processEvents();
    }
}

void moveAway(const PopupWindow &window) {
    QCursor::setPos(window.geometry().topLeft() - QPoint(80, 80));
    QCoreApplication::processEvents();
}

/// Moves the pointer over what still is of a popup that goes. Whether it noticed.
bool moveOverTheRestOf(PopupWindow &window) {
    for (int step = 0; step < 3; ++step) {
        QCursor::setPos(window.geometry().bottomLeft() + QPoint(100 + 5 * step, -8));
        QCoreApplication::processEvents();
    }
    const auto *hold = window.contentView().findChild<PopupHold *>();
    return QTest::qWaitFor([&] { return hold->isHeld() || !window.isVisible(); }, kPatienceMs) &&
           hold->isHeld();
}

}  // namespace

/// What a user does to a popup: closing it, holding it open.
class PopupUserTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        applyAppearance(*qApp);
        QApplication::setQuitOnLastWindowClosed(false);
    }
    void init() { QCursor::setPos(5, 5); }

    void aClickClosesIt_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("closes");
        for (const char *name : {"popupTitle", "popupContent", "popupImage", "popupHeader",
                                 "popupDate", "popupDetails"}) {
            QTest::newRow(name) << QByteArray(name) << true;
        }
        QTest::newRow("popupAbout") << QByteArray("popupAbout") << false;
    }
    void aClickClosesIt() {
        QFETCH(const QByteArray, name);
        QFETCH(const bool, closes);
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QVERIFY(isOpen(*window));
        QWidget *target = &control(*window, name.constData());
        if (auto *text = qobject_cast<QAbstractScrollArea *>(target)) {
            target = text->viewport();
        }
        QTest::mouseClick(target, Qt::RightButton);
        QTest::mousePress(target, Qt::LeftButton);
        QTest::mouseRelease(target, Qt::LeftButton, {}, QPoint(-50, -50));
        QVERIFY(window->isVisible());
        QVERIFY(!window->contentView().condition()->isSignalled());
        QTest::mouseClick(target, Qt::LeftButton);
        QCOMPARE(window->isVisible(), !closes);
        QCOMPARE(window->contentView().condition()->isSignalled(), closes);
        if (const auto sheet = shown<EventSheetStandIn>()) {
            sheet->close();
            QTRY_VERIFY_WITH_TIMEOUT(sheet.isNull(), kPatienceMs);
        }
    }

    void aClickWhileItComesUpClosesIt() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QTRY_VERIFY_WITH_TIMEOUT(window->height() > 22, kPatienceMs);
        QTest::mouseClick(&control(*window, "popupTitle"), Qt::LeftButton);
        QVERIFY(!window->isVisible());
        QVERIFY(window->contentView().condition()->isSignalled());
    }

    void clicksElsewhereAndOnItsScrollBarCloseNothing() {
        QLineEdit other;
        other.show();
        AlertFixture it;
        const auto window =
            it.popup(it.event("Local7.Warning", std::string(3000, 'x') + std::string(50, '\n')));
        window->show();
        QVERIFY(isOpen(*window));
        QTest::mouseClick(&other, Qt::LeftButton);
        auto *bar = window->findChild<QPlainTextEdit *>(u"popupDetails"_s)->verticalScrollBar();
        QTRY_VERIFY_WITH_TIMEOUT(bar->isVisible(), kPatienceMs);
        QTest::mouseClick(bar, Qt::LeftButton);
        QVERIFY(window->isVisible());
        // Pressed elsewhere, let go here.
        QTest::mousePress(&other, Qt::LeftButton);
        QTest::mouseRelease(&control(*window, "popupHeader"), Qt::LeftButton);
        QVERIFY(window->isVisible());
    }

    void escapeClosesIt() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QTest::keyClick(window.get(), Qt::Key_Escape, Qt::ControlModifier);
        QTest::keyClick(window.get(), Qt::Key_Return);
        QVERIFY(window->isVisible());
        QTest::keyClick(window.get(), Qt::Key_Escape);
        QVERIFY(!window->isVisible());
        QVERIFY(window->contentView().condition()->isSignalled());
    }

    void escapeInAnotherWindowMeansItWhereNobodyElseWantsIt() {
        QWidget other;
        auto *plain = new QLineEdit(&other);
        auto *wanting = new EscapeField;
        wanting->setParent(&other);
        other.show();
        AlertFixture it;
        auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QTest::keyClick(wanting, Qt::Key_Escape);
        QCOMPARE(wanting->escapes, 1);
        QVERIFY(window->isVisible());
        QDialog dialog;
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QVERIFY(window->isVisible());
        QTest::keyClick(plain, Qt::Key_Escape);
        QVERIFY(!window->isVisible());
        // Once it is gone, the key is everybody's.
        window.reset();
        QTest::keyClick(wanting, Qt::Key_Escape);
        QCOMPARE(wanting->escapes, 2);
    }

    void thePointerOverItHoldsItOpen() {
        AlertFixture it;
        const auto held = it.popup(it.event("Local7.Warning"), 1);
        auto &label = control(*held, "popupHeld");
        held->show();
        QVERIFY(isOpen(*held));
        QVERIFY(!label.isVisible());
        moveOver(*held);
        QTRY_VERIFY_WITH_TIMEOUT(label.isVisible(), kPatienceMs);
        // Longer than it would take to close.
        bool isLater = false;
        QTimer::singleShot(1000 + 1000 + 500, held.get(), [&isLater] { isLater = true; });
        QTRY_VERIFY_WITH_TIMEOUT(isLater, kPatienceMs);
        QVERIFY(held->isVisible());
        QCOMPARE(held->height(), held->contentView().height());
        QVERIFY(!held->contentView().condition()->isSignalled());
        moveAway(*held);
        QTRY_VERIFY_WITH_TIMEOUT(!label.isVisible(), kPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(!held->isVisible(), kPatienceMs);
    }

    void aPointerParkedWhereItComesUpHoldsNothing() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"), 1);
        const QRect visible = QGuiApplication::primaryScreen()->availableGeometry();
        QCursor::setPos(visible.width() - 100, visible.bottom() - 100);
        QCoreApplication::processEvents();
        window->show();
        QVERIFY(isOpen(*window));
        // As it is told, where the window system does not tell it by itself.
        const QPointF place = window->mapFromGlobal(QCursor::pos());
        for (const auto type : {QEvent::HoverEnter, QEvent::HoverMove, QEvent::HoverMove}) {
            QHoverEvent event(type, place, QPointF(QCursor::pos()), place);
            QApplication::sendEvent(&window->contentView(), &event);
        }
        QVERIFY(!control(*window, "popupHeld").isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kPatienceMs);
    }

    void aPointerLeftThereForMinutesHoldsNothing() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"), 1);
        window->show();
        QVERIFY(isOpen(*window));
        moveOver(*window);
        auto *hold = window->contentView().findChild<PopupHold *>();
        QTRY_VERIFY_WITH_TIMEOUT(hold->isHeld(), kPatienceMs);
        auto *rest = hold->findChild<QTimer *>();
        QVERIFY(rest->isActive());
        QCOMPARE(rest->interval(), PopupHold::kLongestRestMs);
        rest->start(1);
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kPatienceMs);
    }

    void whileItGoesItComesUpAgain() {
        AlertFixture it;
        std::unique_ptr<PopupWindow> window;
        int open = 0;
        // On a busy machine one can be gone before the pointer is there.
        bool isReached = false;
        for (int tries = 0; tries < 20 && !isReached; ++tries) {
            QCursor::setPos(5, 5);
            window = it.popup(it.event("Local7.Warning"), 1);
            window->show();
            QVERIFY(isOpen(*window));
            open = window->height();
            QTRY_VERIFY_WITH_TIMEOUT(window->height() < open, kPatienceMs);
            isReached = moveOverTheRestOf(*window);
        }
        QVERIFY(isReached);
        QTRY_COMPARE_WITH_TIMEOUT(window->height(), open, kPatienceMs);
        QVERIFY(window->isVisible());
        QVERIFY(!window->contentView().condition()->isSignalled());
        moveAway(*window);
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kPatienceMs);
    }

    void itsTimeGoesOnBelowTheEventsSheet() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"), 1);
        window->show();
        QVERIFY(isOpen(*window));
        moveOver(*window);
        QTRY_VERIFY_WITH_TIMEOUT(control(*window, "popupHeld").isVisible(), kPatienceMs);
        QTest::mouseClick(&control(*window, "popupAbout"), Qt::LeftButton);
        const QPointer<EventSheetStandIn> sheet = shown<EventSheetStandIn>();
        QVERIFY(!sheet.isNull());
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kPatienceMs);
        sheet->close();
        QTRY_VERIFY_WITH_TIMEOUT(sheet.isNull(), kPatienceMs);
    }

    void showsAReadableDateBesideTheText() {
        AlertFixture it;
        const QDateTime now = QDateTime::currentDateTime();
        const QDateTime old(QDate(2023, 11, 14), QTime(22, 13, 20));
        for (const QDateTime &time : {now, old}) {
            EventFields fields;
            const std::string seconds = std::to_string(time.toSecsSinceEpoch());
            fields.date = seconds;
            fields.priority = "Local7.Warning";
            fields.message = "m";
            const Event event(it.list, it.list.insertRaw(fields));
            const auto window = it.popup(event);
            window->show();
            const auto &label = *window->findChild<QLabel *>(u"popupDate"_s);
            QCOMPARE(label.text(), time == now ? QLocale().toString(time, u"dddd d MMM, HH:mm"_s)
                                               : QLocale().toString(time, u"d MMM yyyy, HH:mm"_s));
            QCOMPARE(label.accessibleName(), u"Date: "_s + label.text());
            QVERIFY(label.isVisible());
            QVERIFY(window->findChild<QPlainTextEdit *>(u"popupDetails"_s)
                        ->toPlainText()
                        .startsWith(u"Date: "_s + QString::fromStdString(seconds) +
                                    u"\nPriority: Local7.Warning\nHost: \n\nMessage:\nm"_s));
        }
        // Shown in a format of the user's, it is still known; of one that left it is not.
        AppDelegate delegate;
        delegate.state.newDateFormat = "dd.MM.yy";
        it.list.show(delegate.state);
        const Event event(it.list, it.list.idAt(0));
        const auto shownWindow = it.popup(event);
        shownWindow->contentView().setDetails();
        QCOMPARE(shownWindow->findChild<QLabel *>(u"popupDate"_s)->text(),
                 QLocale().toString(old, u"d MMM yyyy, HH:mm"_s));
        it.list.removeRows({{0, 1}});
        shownWindow->contentView().setDetails();
        QVERIFY(shownWindow->findChild<QLabel *>(u"popupDate"_s)->isHidden());
    }

    void theDateLeavesTheSeverityWhole_data() {
        QTest::addColumn<QByteArray>("priority");
        QTest::addColumn<QString>("form");
        QTest::newRow("short") << QByteArray("Kern.Alert") << u"dddd d MMM, HH:mm"_s;
        QTest::newRow("the longest") << QByteArray("Kern.Informational") << u"ddd d MMM, HH:mm"_s;
        QTest::newRow("no room") << "Kern." + QByteArray(200, 'w') << QString();
    }
    void theDateLeavesTheSeverityWhole() {
        QFETCH(const QByteArray, priority);
        QFETCH(const QString, form);
        AlertFixture it;
        // A Wednesday, whose name is long, of this year.
        QDate day(QDate::currentDate().year(), 9, 16);
        day = day.addDays(3 - day.dayOfWeek());
        const QDateTime time(day, QTime(22, 13));
        EventFields fields;
        const std::string seconds = std::to_string(time.toSecsSinceEpoch());
        fields.date = seconds;
        const std::string priorityText = priority.toStdString();
        fields.priority = priorityText;
        const auto window = it.popup({it.list, it.list.insertRaw(fields)});
        window->show();
        const auto &label = *window->findChild<QLabel *>(u"popupDate"_s);
        const auto &header = *window->findChild<QLabel *>(u"popupHeader"_s);
        QCOMPARE(label.isVisible(), !form.isEmpty());
        QCOMPARE(label.isVisible() ? label.text() : QString(),
                 form.isEmpty() ? QString() : QLocale().toString(time, form));
        QTRY_VERIFY_WITH_TIMEOUT(form.isEmpty() || header.width() >= header.sizeHint().width(),
                                 kPatienceMs);
    }
};

QTEST_MAIN(PopupUserTest)
#include "PopupUserTest.moc"
