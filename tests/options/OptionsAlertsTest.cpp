#include "options/OptionsFixture.h"
#include "platform/gui/SoundPlayer.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

namespace quorbel {

using namespace testing;

/// What the controls of popups and sound do.
class OptionsAlertsTest : public QObject {
    Q_OBJECT

private:
    // The two lists follow one rule.
    static void addLists() {
        QTest::addColumn<QByteArray>("listName");
        QTest::newRow("popups") << QByteArray("Display");
        QTest::newRow("sound") << QByteArray("Play");
    }
    static std::string key(const char *list) { return named("popup", list, "Array"); }
    QFileDialog *panel() { return m->page().findChild<QFileDialog *>(QStringLiteral("filePanel")); }
    void confirm(const QString &path) {
        // Not typed: the panel's completer would come over it.
        m->control<QLineEdit>("fileNameEdit").setText(path);
        auto *buttons = panel()->findChild<QDialogButtonBox *>();
        QTest::mouseClick(buttons->button(QDialogButtonBox::Open), Qt::LeftButton);
        QTRY_VERIFY(panel() == nullptr);
    }
    QString touch(const char *name) {
        const QString path = toQString((m->library() / name).string());
        QFile file(path);
        return file.open(QIODevice::WriteOnly) ? path : QString();
    }

    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() { m = std::make_unique<OptionsPage>(); }
    void cleanup() { m.reset(); }

    void theSoundCanBeTried() {
        const auto note = [this] {
            const auto &label = m->control<QLabel>("popupSoundNote");
            return label.isVisible() ? label.text() : QString();
        };
        m->show({{"popupSound", "/nowhere/bell.aiff"}});
        QVERIFY(m->isEnabled("popupSoundTry"));
        QCOMPARE(note(), QString());
        m->click("popupSoundTry");
        QTRY_COMPARE(note(), QStringLiteral("There is no such file: no sound will be heard"));
        const QString silent = touch("silent.aiff");
        auto &field = m->control<QLineEdit>("popupSoundFile");
        field.selectAll();
        QTest::keyClicks(&field, silent);
        QCOMPARE(note(), QString());
        QSignalSpy finished(m->page().findChild<SoundPlayer *>(), &SoundPlayer::finished);
        m->click("popupSoundTry");
        QTRY_COMPARE(note(), QStringLiteral("It cannot be played: it is no sound file, or there is "
                                            "no sound device"));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.first().first().toString(), silent);
        QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&field, Qt::Key_Delete);
        QVERIFY(!m->isEnabled("popupSoundTry"));
        QTest::keyClicks(&field, silent);
        QVERIFY(m->isEnabled("popupSoundTry"));
        m->click("popupEventsPlay");
        QVERIFY(!m->isEnabled("popupSoundTry"));
        QCOMPARE(note(), QString());
    }

    void tickingPopupsStartsWithTenSecondsAndAllSeverities() {
        m->show({});
        m->click("popupEventsDisplay");
        QVERIFY(m->canSave());
        QCOMPARE(m->number("popupEvents"), QStringLiteral("10(10)"));
        QVERIFY(m->isEnabled("popupEventsTime") && m->isEnabled("popupEventsStepper"));
        QCOMPARE(m->boxes("Display"), QStringLiteral("XXXXXXXXX"));
        QCOMPARE(m->boxes("Play"), QStringLiteral("ooooooooo"));
        const Dictionary sent = m->save();
        QCOMPARE(at(sent, "popupEvents"), QStringLiteral("10"));
        QVERIFY(*sent.find("popupDisplayArray") == Value(labels()));
        QCOMPARE(m->delegate().state.iPopupEvents, std::int64_t{10});
        QCOMPARE(m->delegate().state.popupDisplayArray.size(), kLabels.size());
    }

    void untickingPopupsEmptiesThem() {
        Dictionary expected = fullDocument();
        m->show(expected);
        m->click("popupEventsDisplay");
        QVERIFY(m->canSave());
        QCOMPARE(m->number("popupEvents"), QStringLiteral("(0)"));
        QVERIFY(!m->isEnabled("popupEventsTime") && !m->isEnabled("popupEventsStepper"));
        QCOMPARE(m->boxes("Display"), QStringLiteral("ooooooooo"));
        expected.set("popupEvents", 0);
        expected.set("popupDisplayArray", Array{});
        QVERIFY(m->save() == expected);
        QCOMPARE(m->delegate().state.iPopupEvents, std::int64_t{0});
        QVERIFY(m->delegate().state.popupDisplayArray.empty());

        m->click("popupEventsDisplay");  // whatever it was before
        expected.set("popupEvents", 10);
        expected.set("popupDisplayArray", labels());
        QVERIFY(m->save() == expected);
    }

    void theTimeIsTypedAndStepped() {
        Dictionary expected = fullDocument();
        m->show(expected);
        const auto savedAs = [&](int seconds) {
            expected.set("popupEvents", seconds);
            return m->save() == expected && m->delegate().state.iPopupEvents == seconds;
        };
        m->type("popupEventsTime", QStringLiteral("3601"));
        QVERIFY(savedAs(360));
        QTest::keyClick(&m->control("popupEventsStepper"), Qt::Key_Up);
        QCOMPARE(m->number("popupEvents"), QStringLiteral("361(361)"));
        QVERIFY(savedAs(361));
        m->type("popupEventsTime", QStringLiteral("1"));
        QTest::keyClick(&m->control("popupEventsTime"), Qt::Key_Down);
        QVERIFY(savedAs(1));
        m->type("popupEventsTime", {});
        QVERIFY(savedAs(0));
        QTest::keyClick(&m->control("popupEventsTime"), Qt::Key_Up);
        QCOMPARE(m->text("popupEventsTime"), QStringLiteral("1"));
        m->show();
        QTest::keyClick(&m->control("popupEventsTime"), Qt::Key_Up);
        QVERIFY(m->canSave());
    }

    void storedTimesBeyondTheLimitsStay() {
        for (const std::int64_t seconds : {std::int64_t{-7}, std::int64_t{86400}}) {
            Dictionary document = fullDocument();
            document.set("popupEvents", seconds);
            m->show(document);
            QVERIFY(m->isChecked("popupEventsDisplay"));
            QCOMPARE(m->text("popupEventsTime"), QString::number(seconds));
            QVERIFY(m->saveUntouched() == document);
        }
    }

    void withoutATimeOrAFileTheLabelsGo() {
        Dictionary document = fullDocument();
        document.set("popupEvents", 0);
        document.set("popupSound", "");
        m->show(document);
        QVERIFY(!m->isChecked("popupEventsDisplay") && !m->isChecked("popupEventsPlay"));
        document.set("popupDisplayArray", Array{});
        document.set("popupPlayArray", Array{});
        QVERIFY(m->saveUntouched() == document);
    }

    void boxesAddAndTakeTheirLabels_data() { addLists(); }
    void boxesAddAndTakeTheirLabels() {
        QFETCH(QByteArray, listName);
        const char *list = listName.constData();
        Dictionary document = fullDocument();
        // Labels that no box has are kept; those that differ in anything are others.
        document.set(key(list), Array{"Debug", "Informational", "debug", "Error", "Debug"});
        m->show(document);
        QCOMPARE(m->boxes(list), QStringLiteral("OOOXOOOXO"));
        const auto savedAs = [&](Array array) {
            document.set(key(list), std::move(array));
            return m->save() == document;
        };
        m->click(named("popup", "Information", list).c_str());
        QVERIFY(savedAs({"Debug", "Informational", "debug", "Error", "Debug", "Information"}));
        m->click(named("popup", "Debug", list).c_str());  // all equal ones
        QVERIFY(savedAs({"Informational", "debug", "Error", "Information"}));
        m->click(named("popup", "Alerting", list).c_str());
        m->click(named("popup", "Debug", list).c_str());
        QVERIFY(savedAs({"Informational", "debug", "Error", "Information", "Alert", "Debug"}));
    }

    void aLabelIsAddedOnceAndTakenOnlyWhenThere_data() { addLists(); }
    void aLabelIsAddedOnceAndTakenOnlyWhenThere() {
        QFETCH(QByteArray, listName);
        const char *list = listName.constData();
        Dictionary document = fullDocument();
        m->show(document);
        auto &emergency = m->control<QCheckBox>(named("popup", "Emergency", list).c_str());
        auto &alert = m->control<QCheckBox>(named("popup", "Alerting", list).c_str());
        const bool isDisplay = listName == "Display";
        const auto run = [&](std::size_t severity) {
            isDisplay ? m->options().popupEventsDisplay(severity)
                      : m->options().popupEventsPlay(severity);
        };
        emergency.setChecked(true);
        run(0);
        run(0);
        alert.setChecked(false);
        run(1);
        run(1);
        QVERIFY(m->canSave());
        document.set(key(list),
                     isDisplay ? Array{"Unknown", "Emergency"} : Array{"Information", "Emergency"});
        QVERIFY(m->save() == document);
    }

    void eachBoxOfASeverityStandsForItsLabel_data() { addLists(); }
    void eachBoxOfASeverityStandsForItsLabel() {
        QFETCH(QByteArray, listName);
        const char *list = listName.constData();
        Dictionary document = fullDocument();
        document.set(key(list), Array{});
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            m->show(document);
            m->click(named("popup", kParts[i], list).c_str());
            QVERIFY(m->canSave());
            QCOMPARE(at(m->save(), key(list)),
                     QStringLiteral("[\"%1\"]").arg(toQString(kLabels[i])));
        }
    }

    void tickingSoundTakesAllSeverities() {
        m->show({});
        m->click("popupEventsPlay");
        QVERIFY(m->canSave());
        QVERIFY(m->isEnabled("popupSoundFile") && m->isEnabled("popupSoundBrowse"));
        QCOMPARE(m->boxes("Play"), QStringLiteral("XXXXXXXXX"));
        m->type("popupSoundFile", QStringLiteral("/a b/ä.aif"));
        const Dictionary sent = m->save();
        QVERIFY(*sent.find("popupPlayArray") == Value(labels()));
        QCOMPARE(at(sent, "popupSound"), QStringLiteral("\"/a b/ä.aif\""));
        QCOMPARE(toQString(m->delegate().state.popupSound), QStringLiteral("/a b/ä.aif"));
        QCOMPARE(m->delegate().state.popupPlayArray.size(), kLabels.size());
    }

    void untickingSoundKeepsThePath() {
        Dictionary document = fullDocument();
        m->show(document);
        m->click("popupEventsPlay");
        QVERIFY(m->canSave());
        QCOMPARE(m->text("popupSoundFile"), QString());
        QVERIFY(!m->isEnabled("popupSoundFile") && !m->isEnabled("popupSoundBrowse"));
        QCOMPARE(m->boxes("Play"), QStringLiteral("ooooooooo"));
        document.set("popupPlayArray", Array{});
        QVERIFY(m->save() == document);  // with the path

        m->show(document);
        QVERIFY(m->isChecked("popupEventsPlay"));
        QCOMPARE(m->text("popupSoundFile"), QStringLiteral("/sounds/bell.aiff"));
        QCOMPARE(m->boxes("Play"), QStringLiteral("OOOOOOOOO"));

        m->click("popupEventsPlay");
        m->click("popupEventsPlay");
        QCOMPARE(m->text("popupSoundFile"), QString());
        document.set("popupPlayArray", labels());
        QVERIFY(m->save() == document);  // still with the path
    }

    void withoutAPathTheKeyGoes() {
        Dictionary document = fullDocument();
        document.remove("popupSound");
        m->show(document);
        m->click("popupEventsPlay");
        document.set("popupPlayArray", labels());
        QVERIFY(m->save() == document);
        m->type("popupSoundFile", QStringLiteral("x"));
        m->type("popupSoundFile", {});
        document.set("popupSound", "");
        QVERIFY(m->save() == document);
    }

    void typingAPathEnablesSave() {
        m->show(fullDocument());
        QTest::keyClicks(&m->control("popupSoundFile"), QStringLiteral("x"));
        QVERIFY(m->canSave());
    }

    void aPathIsChosenInAPanel() {
        const QString path = touch("ring.aiff");
        m->show(fullDocument());
        m->click("popupSoundBrowse");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        QCOMPARE(panel()->findChild<QLabel *>(QStringLiteral("filePanelMessage"))->text(),
                 QStringLiteral("Please select sound file name with 'aif' extension:"));
        QCOMPARE(panel()->acceptMode(), QFileDialog::AcceptOpen);
        const QString sounds = QStringLiteral("/System/Library/Sounds");
        QCOMPARE(panel()->directory().path(), QDir(sounds).exists() ? sounds : QDir::homePath());
        const QStringList filters = panel()->nameFilters();
        QCOMPARE(filters.join(u'|'), QStringLiteral("Files (*.aiff *.aif)"));
        confirm(path);
        QCOMPARE(m->text("popupSoundFile"), path);
        QVERIFY(m->canSave());
        QCOMPARE(at(m->save(), "popupSound"), u'"' + path + u'"');
    }

    void aCancelledPanelChangesNothing() {
        m->show(fullDocument());
        m->click("popupSoundBrowse");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        panel()->reject();
        QTRY_VERIFY(panel() == nullptr);
        QCOMPARE(m->text("popupSoundFile"), QStringLiteral("/sounds/bell.aiff"));
        QVERIFY(!m->canSave());
        QVERIFY(m->saveUntouched() == fullDocument());
    }

    void labelsHoldTheWordsThatAlertsLookFor() {
        m->show({});
        const std::array words{"Emergency", "Alert",       "Critical", "Error",  "Warning",
                               "Notice",    "Information", "Debug",    "Unknown"};
        for (const char *list : {"Display", "Play"}) {
            for (std::size_t i = 0; i < kParts.size(); ++i) {
                const auto &box = m->control<QCheckBox>(named("popup", kParts[i], list).c_str());
                QVERIFY(box.text().contains(QLatin1String(words[i])));
            }
        }
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::OptionsAlertsTest)
#include "OptionsAlertsTest.moc"
