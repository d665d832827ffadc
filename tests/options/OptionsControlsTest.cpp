#include "options/OptionsFixture.h"

#include <QWheelEvent>

namespace quorbel {

using namespace testing;

/// What the controls of hosts, dates, ratings and retention do.
class OptionsControlsTest : public QObject {
    Q_OBJECT

private:
    static Dictionary withDateFormat(const QString &format) {
        Dictionary document = fullDocument();
        document.set("dateFormat", format.toStdString());
        return document;
    }
    QString chosenFormat() {
        return m->chosen("userDateFormat") + u'|' + m->chosen("userTimeFormat");
    }
    // The removal controls of a class as one sees them.
    QString removal(const char *part) {
        const std::string box = named("removal", part);
        QString state = m->isChecked(box.c_str()) ? QStringLiteral("on ") : QStringLiteral("off ");
        state += m->number(box) + u' ' + m->chosen((box + "Units").c_str());
        for (const char *role : {"Time", "Stepper", "Units"}) {
            state += m->isEnabled((box + role).c_str()) ? u'+' : u'-';
        }
        return state;
    }
    static void addParts() {
        QTest::addColumn<QByteArray>("partName");
        for (const char *part : kParts) {
            QTest::newRow(part) << QByteArray(part);
        }
    }

    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() { m = std::make_unique<OptionsPage>(); }
    void cleanup() { m.reset(); }

    void hostsAreShownByAddressOrByName() {
        m->show({});
        m->click("hostsDisplayName");
        QVERIFY(m->canSave() && !m->isChecked("hostsDisplayIP"));
        QVERIFY(m->isChecked("localeDateFormat"));  // the other group is another one
        QCOMPARE(at(m->save(), "hostsDisplay"), QStringLiteral("true"));
        m->show(fullDocument());
        m->click("hostsDisplayIP");
        QCOMPARE(at(m->save(), "hostsDisplay"), QStringLiteral("false"));
    }

    void aStoredFormatSelectsItsItems_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("saved");
        const auto row = [](const char *stored, const char *chosen, const char *saved) {
            QTest::newRow(stored) << QString::fromUtf8(stored) << QString::fromUtf8(chosen)
                                  << QString::fromUtf8(saved);
        };
        for (const char *date :
             {"yyyy-MM-dd", "dd/MM/yyyy", "MM/dd/yyyy", "dd.MM.yyyy", "d/M/yy"}) {
            for (const char *time :
                 {"HH:mm:ss", "HH:mm", "hh:mm:ss AM/PM", "h:mm:ss AM/PM", "hh:mm AM/PM"}) {
                const std::string format = std::string(date) + ' ' + time;
                row(format.c_str(), (std::string(date) + '|' + time).c_str(), format.c_str());
            }
        }
        row("d/M/yy h:mm:ss", "d/M/yy|h:mm:ss AM/PM", "d/M/yy h:mm:ss AM/PM");
        row("d/M/yy HH:mm a z", "d/M/yy|HH:mm", "d/M/yy HH:mm");
        // What the choosers do not offer is not chosen, and not lost.
        row("yyyy-MM-dd KK:mm a", "yyyy-MM-dd|", "yyyy-MM-dd KK:mm a");
        row("yyyy-MM-dd  HH:mm", "yyyy-MM-dd|", "yyyy-MM-dd  HH:mm");
        row("yy-MM-dd HH:mm", "|HH:mm", "yy-MM-dd HH:mm");
        row("yy-MM-dd HH:mm:ss.SSS", "|", "yy-MM-dd HH:mm:ss.SSS");
        row("YYYY-MM-DD hh:mm", "|hh:mm AM/PM", "YYYY-MM-DD hh:mm AM/PM");
        row("yyyy-MM-dd", "yyyy-MM-dd|", "yyyy-MM-dd");
    }
    void aStoredFormatSelectsItsItems() {
        QFETCH(QString, stored);
        QFETCH(QString, saved);
        m->show(withDateFormat(stored));
        QVERIFY(m->isChecked("definedDateFormat"));
        QVERIFY(m->isEnabled("userDateFormat") && m->isEnabled("userTimeFormat"));
        QTEST(chosenFormat(), "chosen");
        QCOMPARE(at(m->saveUntouched(), "dateFormat"), u'"' + saved + u'"');
        QCOMPARE(toQString(m->delegate().state.newDateFormat), saved);
    }

    void theDefinedFormatStartsWithTheFirstItems() {
        m->show(fullDocument());
        m->click("definedDateFormat");  // even when it is chosen already
        QCOMPARE(chosenFormat(), QStringLiteral("yyyy-MM-dd|HH:mm:ss"));
        QVERIFY(m->canSave());
        m->show({});
        m->click("definedDateFormat");
        QVERIFY(m->isEnabled("userDateFormat") && m->isEnabled("userTimeFormat"));
        QCOMPARE(chosenFormat(), QStringLiteral("yyyy-MM-dd|HH:mm:ss"));
        m->choose("userDateFormat", "dd/MM/yyyy");
        m->choose("userTimeFormat", "h:mm:ss AM/PM");
        QCOMPARE(at(m->save(), "dateFormat"), QStringLiteral("\"dd/MM/yyyy h:mm:ss AM/PM\""));
        QCOMPARE(toQString(m->delegate().state.newDateFormat),
                 QStringLiteral("dd/MM/yyyy h:mm:ss AM/PM"));
    }

    void theStandardFormatTakesTheChoicesAway() {
        m->show(fullDocument());
        m->click("localeDateFormat");
        QCOMPARE(m->index("userDateFormat"), -1);
        QCOMPARE(m->index("userTimeFormat"), -1);
        QVERIFY(!m->isEnabled("userDateFormat") && !m->isEnabled("userTimeFormat"));
        QCOMPARE(at(m->save(), "dateFormat"), QStringLiteral("\"\""));
    }

    void choosingAPatternEnablesSave() {
        for (const char *chooser : {"userDateFormat", "userTimeFormat"}) {
            m->show(fullDocument());
            QVERIFY(!m->canSave());
            QTest::keyClick(&m->control(chooser), Qt::Key_Home);
            QVERIFY(m->canSave());
        }
    }

    void eachRatingIsSaved_data() { addParts(); }
    void eachRatingIsSaved() {
        QFETCH(QByteArray, partName);
        const char *part = partName.constData();
        Dictionary expected = fullDocument();
        m->show(expected);
        for (const auto &[item, level] : {std::pair{"Severe", 2}, {"Normal", 0}, {"Moderate", 1}}) {
            m->choose(named("severity", part).c_str(), item);
            expected.set(named("severity", part), level);
            QVERIFY(m->save() == expected);
        }
    }

    void aRatingBeyondTheItemsStaysUntilARatingIsChosen() {
        Dictionary document = fullDocument();
        document.set("severityDebug", 7);
        document.set("severityAlerting", -3);
        m->show(document);
        QCOMPARE(m->index("severityDebug"), -1);
        QVERIFY(m->saveUntouched() == document);
        m->choose("severityError", "Severe");  // the choices of all nine are taken
        document.set("severityError", 2);
        document.set("severityDebug", -1);
        document.set("severityAlerting", -1);
        QVERIFY(m->save() == document);
    }

    void tickingRetentionAlwaysStartsAtOneOfTheFirstUnit_data() { addParts(); }
    void tickingRetentionAlwaysStartsAtOneOfTheFirstUnit() {
        QFETCH(QByteArray, partName);
        const char *part = partName.constData();
        const std::string box = named("removal", part);
        Dictionary expected = fullDocument();
        m->show(expected);
        const QString stored = removal(part);
        QVERIFY(stored.startsWith(QStringLiteral("on 10")) &&
                stored.endsWith(QStringLiteral("+++")));

        m->click(box.c_str());
        QCOMPARE(removal(part), QStringLiteral("off (0) ---"));
        QVERIFY(m->canSave());
        expected.set(box, 0);
        expected.set(box + "Units", -1);
        QVERIFY(m->save() == expected);

        m->show();  // the document as before
        QCOMPARE(removal(part), stored);
        QVERIFY(!m->canSave());
        m->click(box.c_str());
        m->click(box.c_str());
        QCOMPARE(removal(part), QStringLiteral("on 1(1) Minutes+++"));
        expected.set(box, 1);
        expected.set(box + "Units", 0);
        QVERIFY(m->save() == expected);
    }

    void whatIsTypedAndSteppedIsSaved_data() { addParts(); }
    void whatIsTypedAndSteppedIsSaved() {
        QFETCH(QByteArray, partName);
        const char *part = partName.constData();
        const std::string box = named("removal", part);
        const std::string units = box + "Units";
        Dictionary expected = fullDocument();
        m->show(expected);
        const auto savedWith = [&](int amount, int unit) {
            expected.set(box, amount);
            expected.set(units, unit);
            return m->save() == expected;
        };
        const int unit = m->index(units);
        m->type((box + "Time").c_str(), QStringLiteral("250"));
        QCOMPARE(m->number(box), QStringLiteral("250(250)"));
        QVERIFY(savedWith(250, unit));
        QTest::keyClick(&m->control((box + "Stepper").c_str()), Qt::Key_Down);
        QCOMPARE(m->number(box), QStringLiteral("249(249)"));
        QVERIFY(savedWith(249, unit));
        QTest::keyClick(&m->control((box + "Time").c_str()), Qt::Key_Up);
        m->choose(units.c_str(), "Months");
        QVERIFY(savedWith(250, 4));
        m->type((box + "Time").c_str(), {});
        QVERIFY(savedWith(0, 4));  // off at the next showing, as any 0
    }

    void eachOfTimeStepperAndUnitEnablesSave() {
        m->show(fullDocument());
        QTest::keyClick(&m->control("removalErrorTime"), Qt::Key_Backspace);
        QVERIFY(m->canSave());
        m->show();
        QTest::keyClick(&m->control("removalErrorStepper"), Qt::Key_Up);
        QVERIFY(m->canSave());
        m->show();
        QTest::keyClick(&m->control("removalErrorUnits"), Qt::Key_End);
        QVERIFY(m->canSave());
    }

    void retentionHasItsLimits() {
        m->show(fullDocument());
        m->type("removalErrorTime", QStringLiteral("99999x-1"));
        QCOMPARE(m->number("removalError"), QStringLiteral("9999(9999)"));
        QTest::keyClick(&m->control("removalErrorStepper"), Qt::Key_Up);
        QCOMPARE(m->number("removalError"), QStringLiteral("9999(9999)"));
    }

    void storedRetentionBeyondTheControlsStays() {
        Dictionary document = fullDocument();
        document.set("removalError", -4);
        document.set("removalDebug", 1234567890123);
        document.set("removalNoticeUnits", 9);
        document.set("removalUnknownUnits", -1);
        m->show(document);
        QCOMPARE(removal("Error"), QStringLiteral("on -4(0) Weeks+++"));
        QCOMPARE(removal("Debug"), QStringLiteral("on 1234567890123(9999) Days+++"));
        QCOMPARE(removal("Notice"), QStringLiteral("on 105(105) +++"));
        const Dictionary sent = m->saveUntouched();
        // The units are those that are chosen, and not those that were read.
        document.set("removalNoticeUnits", -1);
        QVERIFY(sent == document);
    }

    void unitsOfRetentionThatIsOffAreNone() {
        Dictionary document = fullDocument();
        document.set("removalWarning", 0);
        m->show(document);
        QCOMPARE(removal("Warning"), QStringLiteral("off (0) ---"));
        document.set("removalWarningUnits", -1);
        QVERIFY(m->saveUntouched() == document);
    }

    void withoutASenderHandlersOnlyBringTheStateInLine() {
        m->show(fullDocument());
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            m->options().eventRemoval(i);
        }
        m->options().popupEvents();
        m->options().popupSound();
        QVERIFY(!m->canSave());
        QCOMPARE(removal("Critical"), QStringLiteral("on 102(102) Days+++"));
        QVERIFY(m->saveUntouched() == fullDocument());

        m->control<QCheckBox>("removalCritical").setChecked(false);
        m->show();
        m->control<QCheckBox>("removalCritical").setChecked(false);
        m->control<QCheckBox>("popupEventsDisplay").setChecked(false);
        m->control<QCheckBox>("popupEventsPlay").setChecked(false);
        m->options().eventRemoval(2);
        m->options().popupEvents();
        m->options().popupSound();
        QVERIFY(!m->canSave());
        QCOMPARE(removal("Critical"), QStringLiteral("off (0) ---"));
        QCOMPARE(m->number("popupEvents"), QStringLiteral("(0)"));
        QCOMPARE(m->text("popupSoundFile"), QString());
        QCOMPARE(m->boxes("Display") + m->boxes("Play"), QString(18, u'o'));
    }

    void theWheelScrollsThePageAndChangesNothing() {
        m->show(fullDocument());
        QList<QWidget *> all;
        for (QWidget *control : m->page().findChildren<QWidget *>()) {
            if (qobject_cast<QComboBox *>(control) != nullptr ||
                qobject_cast<QSpinBox *>(control) != nullptr) {
                all += control;
            }
        }
        QCOMPARE(all.size(), 11 + 9 + 9 + 1);
        for (QWidget *control : all) {
            for (const int angle : {-120, 120}) {
                QWheelEvent wheel({4, 4}, control->mapToGlobal(QPointF(4, 4)), {}, {0, angle}, {},
                                  {}, Qt::NoScrollPhase, false);
                QCoreApplication::sendEvent(control, &wheel);
            }
        }
        QVERIFY(!m->canSave());
        QVERIFY(m->saveUntouched() == fullDocument());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::OptionsControlsTest)
#include "OptionsControlsTest.moc"
