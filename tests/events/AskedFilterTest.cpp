// What another part of the window asks the events page for: the filter bar says it.

#include "events/FindBar.h"
#include "events/FindBarFixture.h"

#include <QAbstractButton>
#include <QTest>

namespace quorbel {

using namespace testing;

class AskedFilterTest : public QObject, private FindBarFixture {
    Q_OBJECT

private:
    FindBar &bar() { return *control<FindBar>("findBar"); }
    QString value(const char *choice) { return control(choice)->accessibleName(); }
    void compareInForce(const EventQuery &query) {
        QVERIFY(bar().lastingFilter() == query);
        QVERIFY(control("findClear")->isVisible());
    }

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }
    void init() { makePageOfEvents(); }
    void cleanup() { endPage(); }

    void oneClassIsChosenWithItsControl() {
        EventQuery query;
        query.classes.set(4);
        m_page->setFilter(query);
        QTRY_COMPARE(rows(), 32);
        QCOMPARE(value("findSeverity"), name("Severity: Only Warning"));
        compareInForce(query);
        choose("findSeverity", name("Only Unknown"));
        QTRY_COMPARE(rows(), 0);
        choose("findSeverity", name("Critical and worse"));
        QTRY_COMPARE(rows(), 32);
        choose("findSeverity", name("Any severity"));
        QTRY_COMPARE(rows(), 96);
    }
    void everyPartGoesToTheControlThatItBelongsTo() {
        m_page->resize(1600, 600);  // with room for all of them
        EventQuery query;
        query.texts = {{{"port", false, false}, false}, {{"1", false, false}, true}};
        query.ratings.set(kModerate + 1);
        query.leastSeverity = 4;
        query.facility = "Daemon";
        query.host = "db*";
        query.spans.set(static_cast<std::size_t>(MovingSpan::kLastDay));
        m_page->setFilter(query);
        compareInForce(query);
        QCOMPARE(chips().size(), 2);
        QVERIFY(control<QAbstractButton>("findRatingModerate")->isChecked());
        QCOMPARE(value("findSeverity"), name("Severity: Warning and worse"));
        QCOMPARE(value("findFacility"), name("Facility: Daemon"));
        QCOMPARE(value("findHost"), name("Host: db*"));
        QCOMPARE(value("findSpan"), name("Time: Last 24 hours"));
    }
    void momentsBecomeASpan() {
        EventQuery query;
        query.from = noon().addSecs(-3600).toSecsSinceEpoch();
        query.until = noon().toSecsSinceEpoch();
        m_page->setFilter(query);
        QTRY_COMPARE(rows(), 4);
        compareInForce(query);
        QVERIFY(control("findSpan")->property("inUse").toBool());
    }
    void aHostInQuotationMarksIsMeantToTheLetter() {
        EventQuery query;
        query.host = "\"fs01\"";
        m_page->setFilter(query);
        QTRY_COMPARE(rows(), 24);
        compareInForce(query);
        QCOMPARE(value("findHost"), name("Host: \"fs01\""));
        query.host = "\"FS01\"";
        m_page->setFilter(query);
        QTRY_COMPARE(rows(), 0);
    }
    void takesThePlaceOfWhatWasAskedFor() {
        add("disk");
        choose("findSeverity", name("Critical and worse"));
        QTRY_COMPARE(rows(), 16);
        EventQuery query;
        query.host = "fs01";
        m_page->setFilter(query);
        QTRY_COMPARE(rows(), 24);
        compareInForce(query);
        QVERIFY(chips().isEmpty());
    }
    // Such as two classes, between which its control does not choose.
    void whatNoControlSaysStandsAsAFilterWithoutAName() {
        EventQuery query;
        query.classes.set(2);
        query.classes.set(6);
        query.host = "fs*";
        m_page->setFilter(query);
        QTRY_COMPARE(rows(), 32);
        compareInForce(query);
        QCOMPARE(value("findSaved"), name("Questions: Unnamed filter"));
        QVERIFY(!control("findHost")->property("inUse").toBool());
        click("findClear");
        QTRY_COMPARE(rows(), 96);
    }
    void isInForceWhenThePageIsShownLater() {
        m_page->hide();
        EventQuery query;
        query.classes.set(6);
        m_page->setFilter(query);
        m_page->show();
        QTRY_COMPARE(rows(), 32);
        compareInForce(query);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::AskedFilterTest)
#include "AskedFilterTest.moc"
