// The controls of the filter bar, by mouse and keyboard, on the real page.

#include "events/FindBarFixture.h"
#include "events/find/EventSpan.h"
#include "events/find/FindChip.h"
#include "events/find/FindSpan.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QDateTimeEdit>
#include <QListWidget>
#include <QTest>

#include <array>

namespace quorbel {

using namespace testing;

class FindBarTest : public QObject, private FindBarFixture {
    Q_OBJECT

private:
    void clickCross(QAbstractButton *chip) {
        QTest::mouseClick(chip, Qt::LeftButton, {},
                          static_cast<FindChip *>(chip)->crossRect().center());
    }
    QString text(const char *button) { return control<QAbstractButton>(button)->text(); }
    bool isInUse(const char *button) { return control(button)->property("inUse").toBool(); }
    void openHosts() {
        click("findHost");
        QTRY_VERIFY(control("findHostPanel")->isVisible());
        QTRY_VERIFY(control("findHostText")->hasFocus());
    }
    QStringList offered() {
        QStringList texts;
        const auto *hosts = control<QListWidget>("findHostList");
        for (int i = 0; i < hosts->count(); ++i) {
            texts += hosts->item(i)->text();
        }
        return texts;
    }
    void setTime(const char *field, const QDateTime &time) {
        auto *edit = control<QDateTimeEdit>(field);
        edit->setFocus();
        edit->setDateTime(time);
    }

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }  // where clocks change
    void init() { makePageOfEvents(); }
    void cleanup() { endPage(); }

    void returnMakesWhatIsTypedACondition() {
        add("DISK");
        QTRY_COMPARE(rows(), 16);
        QCOMPARE(field()->text(), QString());
        QCOMPARE(chips().size(), 1);
        QCOMPARE(chips().first()->accessibleName(), name("Contains “DISK”"));
        find(name("fs"));
        QTRY_COMPARE(rows(), 16);
        QTest::keyClick(field(), Qt::Key_Backspace);
        QTest::keyClicks(field(), name("ailed 6"));
        QTRY_COMPARE(rows(), 3);  // 6, 60 and 66
        add("");
        QTRY_COMPARE(chips().size(), 2);
        // The same once more is no other condition.
        add("DISK");
        QCOMPARE(chips().size(), 2);
        QCOMPARE(rows(), 3);
    }
    void aConditionIsTurnedRoundAndRemovedByTheMouse() {
        add("disk");
        QTRY_COMPARE(rows(), 16);
        QTest::mouseClick(chips().first(), Qt::LeftButton, {}, QPoint(8, 8));
        QTRY_COMPARE(rows(), 80);
        QCOMPARE(chips().first()->accessibleName(), name("Does not contain “disk”"));
        clickCross(chips().first());
        QTRY_COMPARE(rows(), 96);
        QTRY_VERIFY(chips().isEmpty());
        QVERIFY(!control("findClear")->isVisible());
    }
    void aConditionIsTurnedRoundAndRemovedByKeys() {
        add("disk");
        add("failed 6");
        QTRY_COMPARE(rows(), 3);
        QTest::keyClick(field(), Qt::Key_Backspace);
        QTRY_COMPARE(QApplication::focusWidget(), chips().last());
        QTest::keyClick(chips().last(), Qt::Key_Space);
        QTRY_COMPARE(rows(), 13);
        QTest::keyClick(chips().last(), Qt::Key_Delete);
        QTRY_COMPARE(rows(), 16);
        QTRY_VERIFY(field()->hasFocus());
        QTest::keyClick(field(), Qt::Key_Left);
        QTRY_COMPARE(QApplication::focusWidget(), chips().first());
        QTest::keyClick(chips().first(), Qt::Key_Backspace);
        QTRY_COMPARE(rows(), 96);
    }
    void aTextThatIsTooLongIsNoWrongExpression() {
        find(name("disk"));
        QTRY_COMPARE(rows(), 16);
        field()->selectAll();
        QGuiApplication::clipboard()->setText(QString(32767, u'x'));
        QTest::keyClick(field(), Qt::Key_V, Qt::ControlModifier);
        QTRY_VERIFY(control("findError")->isVisible());
        QCOMPARE(control<QLabel>("findError")->text(),
                 name("This text is too long to be looked for"));
        QCOMPARE(rows(), 16);
    }
    void aWrongExpressionBecomesNoCondition() {
        click("findRegex");
        find(name("sdb("));
        QTRY_VERIFY(control("findError")->isVisible());
        QCOMPARE(control("findField")->property("state").toString(), name("wrong"));
        QTest::keyClick(field(), Qt::Key_Return);
        QVERIFY(chips().isEmpty());
        QCOMPARE(field()->text(), name("sdb("));
        QTest::keyClick(field(), Qt::Key_Backspace);
        QTRY_VERIFY(!control("findError")->isVisible());
        QTest::keyClick(field(), Qt::Key_Return);
        QCOMPARE(chips().size(), 1);
        QVERIFY(chips().first()->accessibleName().contains(name("regular expression")));
    }

    void showsWhatIsAtLeastAsSevere() {
        QCOMPARE(text("findSeverity"), name("Severity"));
        choose("findSeverity", name("Warning and worse"));
        QTRY_COMPARE(rows(), 64);
        QCOMPARE(control("findSeverity")->accessibleName(), name("Severity: Warning and worse"));
        QVERIFY(isInUse("findSeverity"));
        choose("findSeverity", name("Error and worse"));
        QTRY_COMPARE(rows(), 32);
        choose("findSeverity", name("Any severity"));
        QTRY_COMPARE(rows(), 96);
        QCOMPARE(text("findSeverity"), name("Severity"));
        QVERIFY(!isInUse("findSeverity"));
    }
    void offersTheFacilitiesThereAre() {
        choose("findFacility", name("Daemon"));
        QTRY_COMPARE(rows(), 32);
        QCOMPARE(text("findFacility"), name("Daemon"));
        click("findFacility");
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu != nullptr);
        QStringList texts;
        for (const QAction *action : menu->actions()) {
            texts += action->text() + (action->isChecked() ? name("*") : QString());
        }
        QCOMPARE(texts, (QStringList{name("Any facility"), QString(), name("Kern"), name("Mail"),
                                     name("Daemon*")}));
        QTest::keyClick(menu, Qt::Key_Escape);
    }
    void completesAHostFromThoseThereAre() {
        openHosts();
        QCOMPARE(offered(),
                 (QStringList{name("10.1.0.7"), name("db02"), name("fs01"), name("fs02")}));
        QTest::keyClicks(control("findHostText"), name("FS"));
        QCOMPARE(offered(), (QStringList{name("fs01"), name("fs02")}));
        QTest::keyClick(control("findHostText"), Qt::Key_Down);
        QTRY_VERIFY(control("findHostList")->hasFocus());
        QTest::keyClick(control("findHostList"), Qt::Key_Down);
        QTest::keyClick(control("findHostList"), Qt::Key_Return);
        QTRY_COMPARE(rows(), 24);
        QCOMPARE(text("findHost"), name("fs02"));
        QVERIFY(!control("findHostPanel")->isVisible());
        QCOMPARE(cell(0, 3), name("fs02"));
    }
    void takesHostsAsTheyAreTyped_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("expected");
        QTest::newRow("wildcard") << name("fs*") << 48;
        QTest::newRow("one character") << name("fs0?") << 48;
        QTest::newRow("network") << name("10.0.0.0/8") << 24;
        QTest::newRow("mask") << name("10.0.0.0/255.0.0.0") << 24;
        QTest::newRow("excluded") << name("!fs01, !db02") << 48;
        QTest::newRow("none") << name("  ") << 96;
        QTest::newRow("nothing excluded") << name("!") << 96;
        QTest::newRow("none of several") << name(" , !,") << 96;
        QTest::newRow("long form") << name("0:0:0:0:0:ffff:10.1.0.7") << 24;
    }
    void takesHostsAsTheyAreTyped() {
        QFETCH(QString, typed);
        QFETCH(int, expected);
        openHosts();
        QTest::keyClicks(control("findHostText"), typed);
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        QTRY_COMPARE(rows(), expected);
        QCOMPARE(isInUse("findHost"), expected < 96);
    }
    void saysAtTheHostsFieldThatANetworkIsNone() {
        openHosts();
        QTest::keyClicks(control("findHostText"), name("fs*"));
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        QTRY_COMPARE(rows(), 48);
        openHosts();
        QTest::keyClicks(control("findHostText"), name("10.0.0/8"));
        const int height = control("findHostPanel")->height();
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        QVERIFY(control("findHostPanel")->isVisible());
        QVERIFY(control("findHostError")->isVisible());
        QVERIFY(control("findHostPanel")->height() > height);
        QCOMPARE(control<QLabel>("findHostError")->text(), name("This is no network: 10.0.0/8"));
        QCOMPARE(control("findHostText")->accessibleDescription(),
                 control<QLabel>("findHostError")->text());
        QCOMPARE(rows(), 48);
        QCOMPARE(text("findHost"), name("fs*"));
        for (int i = 0; i < 2; ++i) {
            QTest::keyClick(control("findHostText"), Qt::Key_Backspace);
        }
        QVERIFY(!control("findHostError")->isVisible());
        QTest::keyClicks(control("findHostText"), name(".0/8"));
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        QTRY_COMPARE(rows(), 24);
        openHosts();
        QTest::keyClicks(control("findHostText"), name("1.2.3.4/33"));
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        QTest::keyClick(control("findHostText"), Qt::Key_Escape);
        openHosts();
        QVERIFY(!control("findHostError")->isVisible());
    }
    void aLongHostIsShortenedAndWholeInTheToolTip() {
        openHosts();
        const QString host = name("a-very-long-name-of-a-host.in-a-department.example.org");
        QTest::keyClicks(control("findHostText"), host);
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        QTRY_VERIFY(text("findHost").endsWith(u'…'));
        QVERIFY(control("findHost")->toolTip().contains(host));
        QVERIFY(control("findHost")->width() < 220);
        add("an even longer text that somebody has to look for in all of the messages");
        QVERIFY(chips().first()->width() < 200);
        QVERIFY(chips().first()->toolTip().contains(name("in all of the messages")));
    }

    void aSpanGoesOnWithTheTime() {
        auto *span = m_page->findChild<FindSpan *>();
        QDateTime now = noon();
        span->setClock([&now] { return now; });
        choose("findSpan", name("Last hour"));
        QTRY_COMPARE(rows(), 5);
        now = now.addSecs(16 * 60);
        QCOMPARE(rows(), 5);
        span->follow();
        QTRY_COMPARE(rows(), 3);
        QTRY_COMPARE(count(), name("3 of 96 events"));
        choose("findSpan", name("Today"));
        QTRY_COMPARE(rows(), 49);
        now = now.addDays(1);
        span->follow();
        QTRY_COMPARE(rows(), 0);
        choose("findSpan", name("Yesterday"));
        QTRY_COMPARE(rows(), 49);
        choose("findSpan", name("Any time"));
        QTRY_COMPARE(rows(), 96);
    }
    void showsWhatCameFromOneMomentToAnother() {
        m_page->findChild<FindSpan *>()->setClock([this] { return noon(); });
        choose("findSpan", name("From ... to ..."));
        QTRY_VERIFY(control("findSpanPanel")->isVisible());
        auto *from = control<QDateTimeEdit>("findFrom");
        QTRY_VERIFY(from->hasFocus());
        setTime("findFrom", {noon().date(), QTime(4, 0)});
        setTime("findTo", {noon().date(), QTime(2, 0)});
        QVERIFY(!control("findSpanShow")->isEnabled());
        setTime("findFrom", {noon().date(), QTime(2, 0)});
        setTime("findTo", {noon().date(), QTime(4, 0)});
        QTest::mouseClick(control("findSpanShow"), Qt::LeftButton);
        QTRY_COMPARE(rows(), 8);
        QCOMPARE(text("findSpan"), name("02:00 – 04:00"));
        QVERIFY(!control("findSpanPanel")->isVisible());
    }
    void returnShowsWhatCameFromOneMomentToAnother() {
        m_page->findChild<FindSpan *>()->setClock([this] { return noon(); });
        const auto openFromTo = [this] {
            choose("findSpan", name("From ... to ..."));
            QTRY_VERIFY(control("findSpanPanel")->isVisible());
        };
        openFromTo();
        setTime("findFrom", {noon().date(), QTime(4, 0)});
        setTime("findTo", {noon().date(), QTime(2, 0)});
        QTest::keyClick(control("findTo"), Qt::Key_Return);
        QVERIFY(control("findSpanPanel")->isVisible());
        QCOMPARE(rows(), 96);
        setTime("findFrom", {noon().date(), QTime(2, 0)});
        setTime("findTo", {noon().date(), QTime(4, 0)});
        QTest::keyClick(control("findTo"), Qt::Key_Return);
        QVERIFY(!control("findSpanPanel")->isVisible());
        QTRY_COMPARE(rows(), 8);
        openFromTo();
        setTime("findTo", {noon().date(), QTime(3, 0)});
        for (int section = 0; section < 5 && control("findTo")->hasFocus(); ++section) {
            QTest::keyClick(control("findTo"), Qt::Key_Tab);
        }
        QTRY_VERIFY(control("findSpanShow")->hasFocus());
        QTest::keyClick(control("findSpanShow"), Qt::Key_Enter, Qt::KeypadModifier);
        QVERIFY(!control("findSpanPanel")->isVisible());
        QTRY_COMPARE(rows(), 4);
    }
    void offersWholeMinutesUnlessTheSpanHasSeconds() {
        auto *span = m_page->findChild<FindSpan *>();
        span->setClock([this] { return noon().addSecs(37); });
        choose("findSpan", name("From ... to ..."));
        QTRY_VERIFY(control("findSpanPanel")->isVisible());
        QVERIFY(control<QDateTimeEdit>("findTo")->text().endsWith(name(" 12:01")));
        QTest::mouseClick(control("findSpanShow"), Qt::LeftButton);
        QCOMPARE(text("findSpan"), name("00:00 – 12:01"));
        span->choose({noon().toSecsSinceEpoch() - 30, noon().toSecsSinceEpoch()});
        QCOMPARE(text("findSpan"), name("11:59:30 – 12:00:00"));
        choose("findSpan", name("From ... to ..."));
        QTRY_VERIFY(control("findSpanPanel")->isVisible());
        QVERIFY(control<QDateTimeEdit>("findFrom")->text().endsWith(name(" 11:59:30")));
    }
    void showsTheWholeOfASpanAcrossMidnight() {
        auto *span = m_page->findChild<FindSpan *>();
        span->setClock([this] { return noon(); });
        const auto shown = [&](const QDateTime &from, const QDateTime &to) {
            span->choose({from.toSecsSinceEpoch(), to.toSecsSinceEpoch()});
            return text("findSpan");
        };
        const QDateTime midnight = noon().date().startOfDay();
        QCOMPARE(shown(midnight.addSecs(-1800), midnight.addSecs(3600)),
                 name("11-20 23:30 – 01:00"));
        QVERIFY(
            control("findSpan")->toolTip().contains(name("2026-11-20 23:30 – 2026-11-21 01:00")));
        QCOMPARE(control("findSpan")->accessibleName(),
                 name("Time: 2026-11-20 23:30 – 2026-11-21 01:00"));
        QCOMPARE(shown(midnight.addDays(-2), midnight.addDays(-1).addSecs(60)),
                 name("11-19 00:00 – 11-20 00:01"));
        QCOMPARE(shown(midnight.addYears(-1), midnight.addYears(-1).addSecs(60)),
                 name("2025-11-21 00:00 – 00:01"));
        QCOMPARE(shown(midnight, midnight.addSecs(3600)), name("00:00 – 01:00"));
    }
    void aDayIsAsLongAsItIs() {
        const QDateTime now(QDate(2026, 3, 29), QTime(12, 0));
        const auto moments = EventSpan{EventSpan::Kind::kToday}.momentsAt(now);
        QCOMPARE(*moments.from, now.date().startOfDay().toSecsSinceEpoch());
        QCOMPARE(*moments.until, now.date().addDays(1).startOfDay().toSecsSinceEpoch());
        const EventSpan span{EventSpan::Kind::kFromTo, now.addDays(-1), now};
        QCOMPARE(span.textAt(now), name("2026-03-28 12:00 – 2026-03-29 12:00"));
    }

    void clearShowsAllAgain() {
        const auto narrow = [this] {
            add("disk");
            find(name("1"));
            choose("findSeverity", name("Critical and worse"));
            click("findRatingSevere");
            QTRY_VERIFY(rows() < 20);
        };
        narrow();
        QVERIFY(control("findClear")->isVisible());
        click("findClear");
        QTRY_COMPARE(count(), name("96 events"));
        QVERIFY(!control("findClear")->isVisible());
        narrow();
        activate();
        QTRY_VERIFY(count() != name("96 events"));
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(count(), name("96 events"));
        QVERIFY(chips().isEmpty() && field()->text().isEmpty());
        QCOMPARE(text("findSeverity"), name("Severity"));
    }
    void escapeEmptiesTheFieldAloneAndThenLeaves() {
        add("disk");
        find(name("9"));
        QTest::keyClick(field(), Qt::Key_Escape);
        QCOMPARE(field()->text(), QString());
        QTRY_COMPARE(rows(), 16);
        QVERIFY(field()->hasFocus());
        QTest::keyClick(field(), Qt::Key_Escape);
        QTRY_VERIFY(table()->hasFocus());
        QCOMPARE(rows(), 16);
        auto *severity = control("findSeverity");
        severity->setFocus();
        QTest::keyClick(severity, Qt::Key_Escape);
        QTRY_VERIFY(table()->hasFocus());
    }

    void whatHasNoRoomGoesIntoAMenu() {
        m_page->resize(830, 500);
        choose("findSeverity", name("Warning and worse"));
        add("up on port");
        QTRY_VERIFY(control("findMore")->isVisible());
        QVERIFY(!control("findSpan")->isVisible());
        QVERIFY(control("findSeverity")->isVisible());
        choose("findMore", name("Host..."));
        QTRY_VERIFY(control("findHostPanel")->isVisible());
        QTest::keyClicks(control("findHostText"), name("fs01"));
        QTest::keyClick(control("findHostText"), Qt::Key_Return);
        // What is in use stands in the row.
        QTRY_VERIFY(control("findHost")->isVisible());
        const QWidget *row = control("findField")->parentWidget();
        for (const char *shown :
             {"findField", "findHost", "findSeverity", "findMore", "findClear"}) {
            QVERIFY2(row->rect().contains(control(shown)->geometry()), shown);
        }
        QVERIFY(control("findField")->width() >= 200);
    }
    void aNarrowPageFoldsTheChoicesBehindAFunnel() {
        find(name("u"));
        m_page->resize(640, 500);
        auto *funnel = control<QAbstractButton>("findMore");
        QTRY_VERIFY(funnel->isVisible());
        for (const char *folded : {"findRating", "findSeverity", "findHost", "findSpan"}) {
            QVERIFY2(!control(folded)->isVisible(), folded);
        }
        QVERIFY(!isInUse("findMore"));
        choose("findMore", name("Moderate: 32"));
        QTRY_COMPARE(rows(), 32);
        QCOMPARE(funnel->text(), name("1"));
        QVERIFY(isInUse("findMore"));
        QCOMPARE(funnel->accessibleName(), name("Conditions, 1 in use"));
    }
    void conditionsWithoutRoomBecomeANumber() {
        for (const char *text : {"link", "up on", "port", "Daemon.Warning", "fs01"}) {
            add(text);
        }
        QTRY_COMPARE(rows(), 8);
        m_page->resize(600, 500);
        auto *number = control<QAbstractButton>("findConditions");
        QTRY_VERIFY(number->isVisible());
        QCOMPARE(number->text(), name("+5"));
        QVERIFY(number->toolTip().contains(name("Contains “port”")));
        QCOMPARE(rows(), 8);
        click("findConditions");
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu != nullptr);
        QCOMPARE(menu->actions().last()->text(), name("“fs01”"));
        menu->actions().last()->menu()->actions().last()->trigger();
        menu->close();
        QTRY_COMPARE(number->text(), name("+4"));
        QTRY_COMPARE(rows(), 32);
    }
    void aNarrowPageAtRestShowsAMagnifierAlone() {
        m_page->resize(640, 500);
        auto *open = control<QAbstractButton>("findOpen");
        QTRY_VERIFY(open->isVisible());
        QVERIFY(!control("findBar")->isVisible());
        QTest::mouseClick(open, Qt::LeftButton);
        QTRY_VERIFY(field()->isVisible() && field()->hasFocus());
        QTest::keyClick(field(), Qt::Key_Escape);
        QTRY_VERIFY(open->isVisible() && !field()->isVisible());
        find(name("disk"));
        QTest::keyClick(field(), Qt::Key_Down);
        QTRY_VERIFY(table()->hasFocus());
        QVERIFY(field()->isVisible());  // in use
        m_page->resize(1000, 600);
        QTRY_VERIFY(field()->isVisible() && !open->isVisible());
    }
    void whatLeadsOutOfNothingFoundFollowsTheTable() {
        add("disk");
        add("moon");
        QTRY_VERIFY(control("findWithout")->isVisible());
        activate();
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), control("findNothingClear"));
        QTest::keyClick(control("findNothingClear"), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), control("findWithout"));
    }
    void aPanelClosesWithThePage() {
        openHosts();
        m_page->resize(1400, 600);  // choices come and go with the room
        m_page->resize(1000, 600);
        QVERIFY(control("findHostPanel")->isVisible());
        m_page->hide();
        QVERIFY(!control("findHostPanel")->isVisible());
        m_page->show();
        openHosts();
        QVERIFY(control("findHostPanel")->isVisible());
        QTest::keyClick(control("findHostText"), Qt::Key_Escape);
        // Its keys are the bar's again.
        find(name("disk"));
        QTest::keyClick(field(), Qt::Key_Down);
        QTRY_VERIFY(table()->hasFocus());
    }
    void everyControlHasANameAndIsReachedByTab() {
        add("disk");
        field()->setFocus();
        QSet<QString> reached;
        for (int i = 0; i < 40; ++i) {
            QWidget *focused = QApplication::focusWidget();
            QVERIFY2(!focused->accessibleName().isEmpty(), qPrintable(focused->objectName()));
            reached += focused->objectName();
            QTest::keyClick(focused, Qt::Key_Tab);
        }
        for (const char *control :
             {"findText", "findCase", "findRegex", "findCondition", "findRatingSevere",
              "findRatingNormal", "findSeverity", "findFacility", "findHost", "findSpan",
              "findClear", "tableView"}) {
            QVERIFY2(reached.contains(name(control)), control);
        }
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::FindBarTest)
#include "FindBarTest.moc"
