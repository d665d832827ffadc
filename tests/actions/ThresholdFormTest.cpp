#include "actions/ActionsFixture.h"
#include "common/ActionThreshold.h"
#include "platform/KeyedArchive.h"
#include "platform/gui/NoteLabel.h"

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

namespace {

Dictionary withThreshold(Value threshold) {
    Dictionary record = ActionsPage::action("one", kRun);
    record.set("threshold", std::move(threshold));
    return record;
}

}  // namespace

/// The threshold of an action, through the controls of its editor.
class ThresholdFormTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ActionsPage> m_page;

    QString meaning() { return m_page->control<NoteLabel>("thresholdMeaning").text(); }
    bool isWarning() {
        return m_page->control("thresholdMeaning").property("role").toString() == u"warning"_s;
    }
    /// The record as it is saved.
    Value saveBoth() {
        m_page->click("onSave");
        m_page->click("saveButton");
        const Array actions = settingArray(m_page->saved(), "actionsArray");
        return actions.empty() ? Value() : actions[0];
    }

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void aRecordWithoutOneStaysWithoutOne() {
        const Dictionary record = ActionsPage::action("one", kRun, kEmail, kEvent);
        m_page->edit(record);
        QVERIFY(!m_page->isChecked("thresholdOn"));
        for (const char *name : {"thresholdMatches", "thresholdMatchesStepper", "thresholdMinutes",
                                 "thresholdMinutesStepper", "thresholdHosts"}) {
            QVERIFY2(!m_page->isEnabled(name), name);
        }
        QCOMPARE(meaning(), u"Acts at each match"_s);
        QVERIFY(!isWarning());
        QCOMPARE(writeKeyedArchive(saveBoth()), writeKeyedArchive(record));
    }

    void tickingOffersOneAndStoresIt() {
        m_page->edit(ActionsPage::action("one", kRun));
        m_page->click("thresholdOn");
        QCOMPARE(m_page->text("thresholdMatches"), u"5"_s);
        QCOMPARE(m_page->text("thresholdMinutes"), u"10"_s);
        QCOMPARE(m_page->chosen("thresholdHosts"), u"in all"_s);
        QCOMPARE(meaning(), u"Then it pauses for 10 minutes"_s);
        QCOMPARE(asText(saveBoth()),
                 asText(withThreshold(Dictionary{{"Matches", 5}, {"Minutes", 10}})));
    }

    void numbersAndHostsAreStored() {
        m_page->edit(ActionsPage::action("one", kRun));
        m_page->click("thresholdOn");
        m_page->type("thresholdMatches", u"1000"_s);
        m_page->type("thresholdMinutes", u"1"_s);
        m_page->choose("thresholdHosts", "from one host");
        QCOMPARE(meaning(), u"Then this host pauses for 1 minute"_s);
        QCOMPARE(asText(saveBoth()), asText(withThreshold(Dictionary{
                                         {"Matches", 1000}, {"Minutes", 1}, {"PerHost", true}})));
    }

    void numbersOutOfBoundsCannotBeTyped() {
        m_page->edit(ActionsPage::action("one", kRun));
        m_page->click("thresholdOn");
        m_page->type("thresholdMatches", u"0-1001x"_s);
        QCOMPARE(m_page->text("thresholdMatches"), u"100"_s);
        m_page->type("thresholdMinutes", u"1441"_s);
        QCOMPARE(m_page->text("thresholdMinutes"), u"144"_s);
        QTest::keyClick(&m_page->control("thresholdMinutes"), Qt::Key_Up);
        QCOMPARE(asText(saveBoth()),
                 asText(withThreshold(Dictionary{{"Matches", 100}, {"Minutes", 145}})));
    }

    void aStoredOneComesBackToTheByte() {
        for (const ActionThreshold &threshold :
             {ActionThreshold{2, 1440, true}, ActionThreshold{1000, 1, false}}) {
            cleanup();
            init();
            const Dictionary record = withThreshold(thresholdRecord(threshold));
            m_page->edit(record);
            QVERIFY(m_page->isChecked("thresholdOn"));
            QCOMPARE(m_page->text("thresholdMatches"), QString::number(threshold.matches));
            QCOMPARE(m_page->text("thresholdMinutes"), QString::number(threshold.minutes));
            QCOMPARE(m_page->chosen("thresholdHosts"),
                     threshold.perHost ? u"from one host"_s : u"in all"_s);
            QCOMPARE(writeKeyedArchive(saveBoth()), writeKeyedArchive(record));
        }
    }

    void untickingRemovesIt() {
        m_page->edit(withThreshold(thresholdRecord({20, 15, true})));
        m_page->click("thresholdOn");
        QCOMPARE(writeKeyedArchive(saveBoth()),
                 writeKeyedArchive(ActionsPage::action("one", kRun)));
    }

    void tickingAgainBringsBackWhatWasThere() {
        m_page->edit(withThreshold(thresholdRecord({20, 15, true})));
        m_page->click("thresholdOn");
        m_page->click("thresholdOn");
        QCOMPARE(asText(saveBoth()), asText(withThreshold(thresholdRecord({20, 15, true}))));
    }

    void anEmptyNumberIsNoThreshold() {
        m_page->edit(withThreshold(thresholdRecord({20, 15, true})));
        m_page->type("thresholdMinutes", {});
        QCOMPARE(meaning(), u"Without both numbers: acts at each match"_s);
        QVERIFY(isWarning());
        m_page->type("thresholdMinutes", u"3"_s);
        QVERIFY(!isWarning());
        m_page->type("thresholdMatches", {});
        QVERIFY(isWarning());
        QCOMPARE(asText(saveBoth()), asText(ActionsPage::action("one", kRun)));
    }

    void oneThatCannotBeUsedIsSaid() {
        for (const Value &unusable :
             {Value("x"), Value(Dictionary{{"Matches", 0}, {"Minutes", 10}}),
              Value(Dictionary{{"Matches", 5}, {"Minutes", 1 << 30}})}) {
            cleanup();
            init();
            m_page->edit(withThreshold(unusable));
            QVERIFY(!m_page->isChecked("thresholdOn"));
            QCOMPARE(meaning(), u"The stored threshold cannot be used: acts at each match"_s);
            QVERIFY(isWarning());
            m_page->click("thresholdOn");
            QVERIFY(!isWarning());
            QCOMPARE(m_page->text("thresholdMatches"), u"5"_s);
            m_page->click("thresholdOn");
            QCOMPARE(asText(saveBoth()), asText(ActionsPage::action("one", kRun)));
        }
    }

    void aNewActionBeginsWithoutTheLastOnes() {
        m_page->edit(withThreshold(thresholdRecord({20, 15, true})));
        m_page->click("onCancel");
        m_page->click("automaticActionsAdd");
        QVERIFY(!m_page->isChecked("thresholdOn"));
        m_page->click("thresholdOn");
        QCOMPARE(m_page->text("thresholdMatches"), u"5"_s);
        QCOMPARE(m_page->chosen("thresholdHosts"), u"in all"_s);
    }

    void aRecordThatEndsEarlyHasNone() {
        Dictionary record = withThreshold(thresholdRecord({20, 15, true}));
        record.set("Facility", "Unheard of");
        m_page->edit(record);
        QCOMPARE(
            asText(saveBoth()),
            u"{\"Name\": \"one\", \"IP\": \"0.0.0.0\", \"Message\": \"*\", \"Mask\": \"0\"}"_s);
    }

    void everyControlIsReachedByTheKeyboardAndHasAName() {
        m_page->edit(withThreshold(thresholdRecord({20, 15, true})));
        m_page->control("actionEventText").setFocus();
        for (const char *name :
             {"thresholdOn", "thresholdMatches", "thresholdMinutes", "thresholdHosts"}) {
            QTest::keyClick(m_page->openSheet()->focusWidget(), Qt::Key_Tab);
            QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), QLatin1String(name));
            QVERIFY2(!m_page->control(name).accessibleName().isEmpty(), name);
            QVERIFY2(!m_page->control(name).toolTip().isEmpty(), name);
        }
        QTest::keyClick(m_page->openSheet()->focusWidget(), Qt::Key_Up);
        QCOMPARE(m_page->chosen("thresholdHosts"), u"in all"_s);
        QTest::keyClick(m_page->openSheet()->focusWidget(), Qt::Key_Tab);
        QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), u"onCancel"_s);
        QCOMPARE(m_page->control("thresholdOn").accessibleDescription(), meaning());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ThresholdFormTest)
#include "ThresholdFormTest.moc"
