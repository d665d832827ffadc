#include "options/OptionsFixture.h"

#include <QDateTime>
#include <QLabel>

namespace quorbel {

using namespace testing;

/// What the options page and its filter editor say of the listed events before anything is saved.
class ConsequencesTest : public QObject {
    Q_OBJECT

private:
    void insert(std::size_t count, std::string_view priority, qint64 secondsAgo,
                std::string_view host = "10.0.0.1", std::string_view message = "disk full") {
        const std::string date = std::to_string(QDateTime::currentSecsSinceEpoch() - secondsAgo);
        for (std::size_t i = 0; i < count; ++i) {
            m->delegate().events.insertRaw({date, priority, host, message, {}});
        }
    }
    QString said() { return m->control<QLabel>("consequence").text(); }
    QString more() { return m->control<QLabel>("consequenceMore").text(); }
    bool isBold() { return m->control<QLabel>("consequence").font().bold(); }
    void type(const QByteArray &field, const QString &text) {
        auto &line = m->control<QLineEdit>(field);
        line.setFocus();
        line.selectAll();
        QTest::keyClicks(&line, text);
    }
    void choose(const QByteArray &chooser, const QString &item) {
        auto &box = m->control<QComboBox>(chooser);
        box.setFocus();
        QTest::keyClick(&box, Qt::Key_Home);
        for (int i = 0; i < box.findText(item); ++i) {
            QTest::keyClick(&box, Qt::Key_Down);
        }
        QCOMPARE(box.currentText(), item);
    }
    static Dictionary keeping(int days) {
        Dictionary document;
        for (const char *part : kParts) {
            document.set(named("removal", part), days);
            document.set(named("removal", part, "Units"), 2);
        }
        return document;
    }
    bool isSaveProminent() {
        return m->control("saveButton").property("role").toString() == QStringLiteral("primary");
    }

    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() {
        QLocale::setDefault(QLocale(QStringLiteral("en_US")));
        m = std::make_unique<OptionsPage>();
    }
    void cleanup() { m.reset(); }

    void anExcludeFilterSaysWhatItWouldHaveLeftOut() {
        insert(1200, "Local7.Debug", 0, "192.168.40.7");
        insert(800, "Kern.Error", 3 * 86400, "10.0.0.1", "fan failed");
        m->show({});
        m->click("excludeFiltersAdd");
        QTRY_COMPARE(said(), QStringLiteral("It would have left out all 2,000 listed events."));
        QCOMPARE(more(), QStringLiteral("Nothing would arrive any more."));
        QVERIFY(isBold());
        type("filterMessage", QStringLiteral("FAN*"));
        QTRY_COMPARE(said(), QStringLiteral("It would have left out 800 of 2,000 listed events."));
        QCOMPARE(more(), QStringLiteral("Today: 0."));
        QVERIFY(!isBold());
        m->click("anyMessage");
        type("filterIP", QStringLiteral("192.168.40.0"));
        type("filterMask", QStringLiteral("24"));
        QTRY_COMPARE(said(),
                     QStringLiteral("It would have left out 1,200 of 2,000 listed events."));
        choose("filterSeverity", QStringLiteral("Alert"));
        QTRY_COMPARE(said(), QStringLiteral("It would have left out 0 of 2,000 listed events."));
        QCOMPARE(more(), QString());
        m->click("anySeverity");
        choose("filterFacility", QStringLiteral("Local7"));
        QTRY_COMPARE(said(),
                     QStringLiteral("It would have left out 1,200 of 2,000 listed events."));
    }

    void itGoesOnWithWhatArrivesAndWhatLeaves() {
        insert(10, "Local7.Debug", 0);
        m->show({});
        m->click("excludeFiltersAdd");
        choose("filterFacility", QStringLiteral("Local7"));
        const auto of = [](const char *found) {
            return QStringLiteral("It would have left out %1 listed events.")
                .arg(QLatin1String(found));
        };
        // All that are listed, but other messages would arrive.
        QTRY_COMPARE(more(), QStringLiteral("Today: 10."));
        QCOMPARE(said(), of("all 10"));
        insert(5, "Kern.Debug", 0);
        QTRY_COMPARE(said(), of("10 of 15"));
        m->delegate().events.removeRows({{5, 3}});
        QTRY_COMPARE_WITH_TIMEOUT(said(), of("7 of 12"), 30'000);
    }

    void anIncludeFilterSaysWhatItWouldHaveAccepted() {
        insert(3, "Local7.Debug", 0, "printer");
        insert(4, "Local7.Debug", 0, "10.0.0.1");
        m->show({});
        m->click("includeFiltersAdd");
        QTRY_COMPARE(said(), QStringLiteral("It would have accepted all 7 listed events."));
        QVERIFY(!isBold());
        type("filterIP", QStringLiteral("10.0.0.0"));
        type("filterMask", QStringLiteral("8"));
        QTRY_COMPARE(said(), QStringLiteral("It would have accepted 4 of 7 listed events."));
        QCOMPARE(more(), QStringLiteral("Today: 4. Perhaps, as only the host's name is known: 3."));
    }

    void anEmptyListSaysThatItIsEmpty() {
        m->show({});
        m->click("excludeFiltersAdd");
        QTRY_COMPARE(said(), QStringLiteral("No events are listed yet."));
        QVERIFY(!isBold());
    }

    void savingSaysWhatItRemoves() {
        insert(70'112, "Local7.Informational", 3600);
        insert(1'206, "Local7.Notice", 40 * 86400);
        insert(1, "Local7.Debug", 40 * 86400);
        insert(500, "Local7.Informational", -60);
        m->show(keeping(90));
        QVERIFY(isSaveProminent());
        // Unticked and ticked again it is one minute.
        m->click("removalInformation");
        m->click("removalInformation");
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 70,112 events now, for good."));
        m->click("removalNotice");
        m->click("removalNotice");
        type("removalDebugTime", QStringLiteral("30"));
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 71,319 events now, for good."));
        QCOMPARE(more(), QStringLiteral("Information: 70,112, Notice: 1,206, Debug: 1"));
        QVERIFY(isBold());
        QVERIFY(!isSaveProminent());
        m->click("removalNotice");
        m->click("removalInformation");
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 1 event now, for good."));
        type("removalDebugTime", QStringLiteral("90"));
        QTRY_COMPARE(said(), QString());
        QCOMPARE(more(), QString());
        QVERIFY(isSaveProminent());
    }

    void whatGrowsTooOldMeanwhileIsCountedToo() {
        m->show(keeping(90));
        m->click("removalError");
        m->click("removalError");  // one minute
        insert(10, "Local7.Error", 55);
        const auto becomesDue = [this] {
            insert(1, "Local7.Debug", 0);
            return said() == QStringLiteral("Saving removes 10 events now, for good.");
        };
        QVERIFY2(QTest::qWaitFor(becomesDue, 60'000), qPrintable(said()));
    }

    void whatWaitsWhileTheListIsHeldIsNotCounted() {
        const QString notCounted =
            QStringLiteral("Not counted: the events that wait while the list is held.");
        insert(10, "Local7.Error", 3600);
        m->show(keeping(90));
        EventHold &hold = m->delegate().hold;
        hold.setOn(true);
        hold.addArrival({"1700000000", "Local7.Notice", "h", "m", {}});
        m->click("removalError");
        m->click("removalError");
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 10 events now, for good."));
        QCOMPARE(more(), QStringLiteral("Error: 10\n") + notCounted);
        // For good, and nothing else for less time.
        m->click("removalError");
        QTRY_COMPARE(said(), QString());
        m->click("removalNotice");
        m->click("removalNotice");
        QTRY_COMPARE(said(), QStringLiteral("Saving removes none of the listed events now."));
        QCOMPARE(more(), notCounted);
        QVERIFY(!isBold());
        QVERIFY(isSaveProminent());
    }

    void otherUnitsAreOtherTimes() {
        insert(10, "Local7.Error", 90 * 60);
        m->show(keeping(90));
        m->click("removalError");
        m->click("removalError");
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 10 events now, for good."));
        choose("removalErrorUnits", QStringLiteral("Days"));
        QTRY_COMPARE(said(), QString());
        choose("removalErrorUnits", QStringLiteral("Hours"));
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 10 events now, for good."));
    }

    void whatIsDueAnywayIsNoConsequence() {
        insert(10, "Local7.Error", 100 * 86400);
        insert(1, "Local7.Error", 50 * 86400);
        m->show(keeping(90));
        m->click("removalDebug");
        type("removalErrorTime", QStringLiteral("30"));
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 1 event now, for good."));
    }

    // Nothing is removed while there are no settings; the first that are saved, for whatever
    // reason, have the times that the page shows.
    void theFirstSettingsRemoveToo() {
        insert(10, "Local7.Error", 40 * 86400);
        m->show();
        m->click("hostsDisplayName");
        QTRY_COMPARE(said(), QStringLiteral("Saving removes 10 events now, for good."));
    }

    void leavingForgetsIt() {
        insert(10, "Local7.Error", 3600);
        m->show(keeping(90));
        m->click("removalError");
        m->click("removalError");
        QTRY_VERIFY(!said().isEmpty());
        m->click("onCancel");
        m->show();
        QCOMPARE(said(), QString());
        QVERIFY(isSaveProminent());
        // An edit that is not followed by a pause before the page is shown anew.
        m->click("removalError");
        m->click("removalError");
        m->show();
        QTest::qWait(1000);
        QCOMPARE(said(), QString());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ConsequencesTest)
#include "ConsequencesTest.moc"
