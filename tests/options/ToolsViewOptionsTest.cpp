#include "options/OptionsFixture.h"

#include <QScrollBar>

#include <fstream>

namespace quorbel {

using namespace testing;

/// Loading and saving of the whole page.
class ToolsViewOptionsTest : public QObject {
    Q_OBJECT

private:
    static QString expectedWithoutDocument(const char *display, const char *levels,
                                           const char *amount, const char *units) {
        std::string text = "{\"hostsDisplay\": " + std::string(display) + ", \"dateFormat\": \"\"";
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            text += named(", \"severity", kParts[i], "\": ") + levels[i];
        }
        for (const char *part : kParts) {
            text += named(", \"removal", part, "\": ") + amount;
        }
        for (const char *part : kParts) {
            text += named(", \"removal", part, "Units\": ") + units;
        }
        text +=
            ", \"popupEvents\": 0, \"popupDisplayArray\": [], \"popupPlayArray\": [], "
            "\"includeFiltersArray\": [], \"excludeFiltersArray\": []}";
        return toQString(text);
    }
    // The text of a document with the keys in the order in which another one, written over, has
    // them.
    static QString inOrderOf(const Dictionary &first, const Dictionary &document) {
        Dictionary ordered;
        for (const auto &[key, value] : first) {
            if (const Value *found = document.find(key)) {
                ordered.set(key, *found);
            }
        }
        for (const auto &[key, value] : document) {
            ordered.set(key, value);
        }
        return toQString(textOf(ordered));
    }
    // Nothing chosen and nothing typed: what a page without any values shows.
    void verifyDefaultsAreShown() {
        QVERIFY(m->isChecked("hostsDisplayIP") && !m->isChecked("hostsDisplayName"));
        QVERIFY(m->isChecked("localeDateFormat") && !m->isChecked("definedDateFormat"));
        for (const char *chooser : {"userDateFormat", "userTimeFormat"}) {
            QVERIFY(!m->isEnabled(chooser));
            QCOMPARE(m->index(chooser), -1);
        }
        QVERIFY(!m->isChecked("popupEventsDisplay") && !m->isChecked("popupEventsPlay"));
        QCOMPARE(m->boxes("Display"), QStringLiteral("ooooooooo"));
        QCOMPARE(m->boxes("Play"), QStringLiteral("ooooooooo"));
        for (const char *field : {"popupEventsTime", "popupSoundFile"}) {
            QVERIFY(!m->isEnabled(field));
            QCOMPARE(m->text(field), QString());
        }
        QVERIFY(!m->isEnabled("popupEventsStepper") && !m->isEnabled("popupSoundBrowse"));
        QCOMPARE(m->rows("includeFiltersTable"), QString());
        QCOMPARE(m->rows("excludeFiltersTable"), QString());
        QVERIFY(!m->canSave());
    }

    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() { m = std::make_unique<OptionsPage>(); }
    void cleanup() { m.reset(); }

    void controlsHaveTheirNames() {
        m->show();
        QCOMPARE(m->page().objectName(), QStringLiteral("ToolsViewOptions"));
        QCOMPARE(m->page().palette().color(QPalette::Window), QColor(Qt::white));
        std::vector<std::string> names{"hostsDisplayIP",       "hostsDisplayName",
                                       "localeDateFormat",     "definedDateFormat",
                                       "userDateFormat",       "userTimeFormat",
                                       "popupEventsDisplay",   "popupEventsTime",
                                       "popupEventsStepper",   "popupEventsPlay",
                                       "popupSoundFile",       "popupSoundBrowse",
                                       "includeFiltersTable",  "includeFiltersEdit",
                                       "includeFiltersRemove", "includeFiltersAdd",
                                       "excludeFiltersTable",  "excludeFiltersEdit",
                                       "excludeFiltersRemove", "excludeFiltersAdd",
                                       "saveButton",           "onCancel",
                                       "scrollView",           "optionsBlank"};
        for (const char *part : kParts) {
            for (const char *role : {"", "Time", "Stepper", "Units"}) {
                names.push_back(named("removal", part, role));
            }
            names.push_back(named("severity", part));
            names.push_back(named("popup", part, "Display"));
            names.push_back(named("popup", part, "Play"));
        }
        for (const std::string &name : names) {
            const auto found = m->page().findChildren<QWidget *>(toQString(name));
            QVERIFY2(found.size() == 1, name.c_str());
            QVERIFY2(!found.first()->accessibleName().isEmpty(), name.c_str());
        }
    }

    void choosersHaveTheirItems() {
        m->show();
        const auto items = [this](const std::string &name) {
            const auto &chooser = m->control<QComboBox>(name.c_str());
            QStringList texts;
            for (int i = 0; i < chooser.count(); ++i) {
                texts += chooser.itemText(i);
            }
            return texts.join(u'|');
        };
        QCOMPARE(items("userDateFormat"),
                 QStringLiteral("yyyy-MM-dd|dd/MM/yyyy|MM/dd/yyyy|dd.MM.yyyy|d/M/yy"));
        QCOMPARE(items("userTimeFormat"),
                 QStringLiteral("HH:mm:ss|HH:mm|hh:mm:ss AM/PM|h:mm:ss AM/PM|hh:mm AM/PM"));
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            QCOMPARE(items(named("severity", kParts[i])), QStringLiteral("Normal|Moderate|Severe"));
            QCOMPARE(items(named("removal", kParts[i], "Units")),
                     QStringLiteral("Minutes|Hours|Days|Weeks|Months"));
            for (const char *list : {"Display", "Play"}) {
                QCOMPARE(m->control<QCheckBox>(named("popup", kParts[i], list).c_str()).text(),
                         QLatin1String(kLabels[i]));
            }
        }
    }

    void withoutADocumentTheDefaultsStand_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("no file") << QByteArray();
        QTest::newRow("damaged") << QByteArray("bplist00 and no more");
        QTest::newRow("no dictionary")
            << QByteArray::fromStdString(writeKeyedArchive(Array{"hostsDisplay"}));
    }
    void withoutADocumentTheDefaultsStand() {
        QFETCH(QByteArray, file);
        if (!file.isEmpty()) {
            std::ofstream(m->library() / kSettingsFileName) << file.toStdString();
        }
        m->show();
        verifyDefaultsAreShown();
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            QCOMPARE(m->index(named("severity", kParts[i])), 2 - static_cast<int>(i / 3));
            QVERIFY(m->isChecked(named("removal", kParts[i]).c_str()));
            QVERIFY(m->isEnabled(named("removal", kParts[i], "Time").c_str()));
            QCOMPARE(m->number(named("removal", kParts[i])), QStringLiteral("30(30)"));
            QCOMPARE(m->index(named("removal", kParts[i], "Units")), 2);
        }
        QCOMPARE(toQString(textOf(m->saveUntouched())),
                 expectedWithoutDocument("false", "222111000", "30", "2"));
    }

    void whatADocumentLacksIsEmpty() {
        m->show({});
        verifyDefaultsAreShown();
        for (const char *part : kParts) {
            QCOMPARE(m->index(named("severity", part)), 0);
            QVERIFY(!m->isChecked(named("removal", part).c_str()));
            for (const char *role : {"Time", "Stepper", "Units"}) {
                QVERIFY(!m->isEnabled(named("removal", part, role).c_str()));
            }
            QCOMPARE(m->number(named("removal", part)), QStringLiteral("(0)"));
            QCOMPARE(m->index(named("removal", part, "Units")), -1);
        }
        QCOMPARE(toQString(textOf(m->saveUntouched())),
                 expectedWithoutDocument("false", "000000000", "0", "-1"));
    }

    void oneMissingRetentionIsOffAndNotTheDefault() {
        Dictionary document = fullDocument();
        document.remove("removalError");
        m->show(document);
        QVERIFY(!m->isChecked("removalError"));
        QCOMPARE(m->number("removalError"), QStringLiteral("(0)"));
        QVERIFY(m->isChecked("removalWarning"));
        const Dictionary sent = m->saveUntouched();
        QCOMPARE(at(sent, "removalError"), QStringLiteral("0"));
        QCOMPARE(at(sent, "removalErrorUnits"), QStringLiteral("-1"));
    }

    void everyValueIsShown() {
        m->show(fullDocument());
        QVERIFY(m->isChecked("hostsDisplayName") && !m->isChecked("hostsDisplayIP"));
        QVERIFY(m->isChecked("definedDateFormat") && !m->isChecked("localeDateFormat"));
        QVERIFY(m->isEnabled("userDateFormat") && m->isEnabled("userTimeFormat"));
        QCOMPARE(m->chosen("userDateFormat"), QStringLiteral("dd.MM.yyyy"));
        QCOMPARE(m->chosen("userTimeFormat"), QStringLiteral("hh:mm:ss AM/PM"));
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            const int place = static_cast<int>(i);
            QCOMPARE(m->index(named("severity", kParts[i])), (place + 1) % 3);
            QVERIFY(m->isChecked(named("removal", kParts[i]).c_str()));
            QCOMPARE(m->number(named("removal", kParts[i])),
                     QStringLiteral("%1(%1)").arg(100 + place));
            QCOMPARE(m->index(named("removal", kParts[i], "Units")), place % 5);
        }
        QVERIFY(m->isChecked("popupEventsDisplay") && m->isChecked("popupEventsPlay"));
        QCOMPARE(m->number("popupEvents"), QStringLiteral("45(45)"));
        QCOMPARE(m->boxes("Display"), QStringLiteral("XOOOOOOOX"));
        QCOMPARE(m->text("popupSoundFile"), QStringLiteral("/sounds/bell.aiff"));
        QVERIFY(m->isEnabled("popupSoundFile") && m->isEnabled("popupSoundBrowse"));
        QCOMPARE(m->boxes("Play"), QStringLiteral("OXOOOOXOO"));
        QCOMPARE(m->rows("includeFiltersTable"), QStringLiteral("first|second"));
        QCOMPARE(m->rows("includeFiltersTable", 1), QStringLiteral("Any|10.0.0.0/8"));
        QCOMPARE(m->rows("excludeFiltersTable"), QStringLiteral("third"));
        QVERIFY(!m->canSave());
    }

    void anUntouchedSaveSendsWhatWasRead() {
        Dictionary document = fullDocument();
        // Keys that the page does not know, of every type.
        const Dictionary others{{"text", "ä,\n"},
                                {"integer", -5},
                                {"large", std::uint64_t{1} << 63U},
                                {"real", 0.1},
                                {"flag", true},
                                {"data", Data{std::string("\0\xff", 2)}},
                                {"date", Date{12.5}},
                                {"actionsArray", Array{Dictionary{{"Name", "x"}, {"y", Null{}}}}}};
        for (const auto &[key, value] : others) {
            document.set(key, value);
        }
        m->show(document);
        const Dictionary sent = m->saveUntouched();
        QCOMPARE(toQString(textOf(sent)), toQString(textOf(document)));
        QVERIFY(sent == document);
        QVERIFY(m->nothingWasSent());
    }

    void aWrongTypeReadsAsTheEmptyValue() {
        m->show({});
        const Dictionary empty = m->saveUntouched();
        for (const Value &wrong : {Value("7"), Value(7), Value(Data{"7"}), Value(Date{7}),
                                   Value(Array{}), Value(Dictionary{{"7", 7}}), Value(Null{})}) {
            Dictionary document;
            for (const auto &[key, value] : fullDocument()) {
                const bool isNumber =
                    value.type() == Value::Type::kInteger || value.type() == Value::Type::kBoolean;
                if (wrong.type() != value.type() &&
                    !(isNumber && wrong.type() == Value::Type::kInteger)) {
                    document.set(key, wrong);
                }
            }
            QVERIFY(document.size() >= 6);
            m->show(document);
            QCOMPARE(toQString(textOf(m->saveUntouched())), inOrderOf(document, empty));
        }
    }

    void numbersOfAnotherKindAreTaken() {
        m->show({{"hostsDisplay", 2},
                 {"severityError", true},
                 {"removalDebug", 7.9},
                 {"removalDebugUnits", 1.5},
                 {"popupEvents", std::uint64_t{1} << 63U}});
        const Dictionary sent = m->saveUntouched();
        QCOMPARE(at(sent, "hostsDisplay"), QStringLiteral("true"));
        QCOMPARE(at(sent, "severityError"), QStringLiteral("1"));
        QCOMPARE(at(sent, "removalDebug"), QStringLiteral("7"));
        QCOMPARE(at(sent, "removalDebugUnits"), QStringLiteral("1"));
        QCOMPARE(at(sent, "popupEvents"), QStringLiteral("9223372036854775807"));
    }

    void elementsOfAWrongTypeDoNoHarm() {
        Dictionary document = fullDocument();
        document.set("popupDisplayArray", Array{7, "Debug", Null{}});
        document.set("includeFiltersArray",
                     Array{"no record", Dictionary{{"Name", 5}, {"Mask", 16}}, filter("good")});
        m->show(document);
        QCOMPARE(m->boxes("Display"), QStringLiteral("OOOOOOOXO"));
        QCOMPARE(m->rows("includeFiltersTable"), QStringLiteral("||good"));
        const Dictionary sent = m->saveUntouched();
        QCOMPARE(at(sent, "popupDisplayArray"), QStringLiteral("[\"Debug\"]"));
        QVERIFY(*sent.find("includeFiltersArray") == *document.find("includeFiltersArray"));
    }

    void eachShowingReadsAnewAndStartsAtTheTop() {
        m->show(fullDocument());
        m->page().resize(900, 400);
        m->click("localeDateFormat");
        m->clickRow("includeFiltersTable", 0);
        QScrollBar *bar = m->control<QScrollArea>("scrollView").verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 100);
        bar->setValue(100);
        m->type("removalErrorTime", QStringLiteral("5"));
        QVERIFY(m->canSave());

        Dictionary document = fullDocument();
        document.set("hostsDisplay", false);
        document.set("removalError", 77);
        m->show(document);
        QVERIFY(m->isChecked("hostsDisplayIP") && m->isChecked("definedDateFormat"));
        QCOMPARE(m->number("removalError"), QStringLiteral("77(77)"));
        QCOMPARE(bar->value(), 0);
        QVERIFY(!m->canSave());
        QCOMPARE(m->selectedRow("includeFiltersTable"), -1);
        QVERIFY(!m->isEnabled("includeFiltersEdit") && !m->isEnabled("includeFiltersRemove"));
        QVERIFY(m->saveUntouched() == document);
    }

    void savingUpdatesTheApplicationAndReturns() {
        AppState &state = m->delegate().state;
        state.newDateFormat = "before";
        state.oldDateFormat = "long before";
        m->show(fullDocument());
        m->options().parentTab = Tab::kEvents;
        m->saveUntouched();
        QCOMPARE(toQString(state.oldDateFormat), QStringLiteral("before"));
        QCOMPARE(toQString(state.newDateFormat), QStringLiteral("dd.MM.yyyy hh:mm:ss AM/PM"));
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            QCOMPARE(state.*kSeverityLevels[i], static_cast<std::int64_t>((i + 1) % 3));
        }
        QCOMPARE(state.iPopupEvents, std::int64_t{45});
        QCOMPARE(toQString(state.popupSound), QStringLiteral("/sounds/bell.aiff"));
        QVERIFY((state.popupDisplayArray == std::vector<std::string>{"Unknown", "Emergency"}));
        QVERIFY((state.popupPlayArray == std::vector<std::string>{"Alert", "Information"}));
        QVERIFY(m->mainWindow.selected == std::vector<Tab>{Tab::kEvents});

        m->options().parentTab = Tab::kTools;
        m->click("localeDateFormat");
        m->save();
        QCOMPARE(toQString(state.oldDateFormat), QStringLiteral("dd.MM.yyyy hh:mm:ss AM/PM"));
        QCOMPARE(toQString(state.newDateFormat), QString());
        QVERIFY((m->mainWindow.selected == std::vector<Tab>{Tab::kEvents, Tab::kTools}));
    }

    void cancelChangesNothing() {
        AppState &state = m->delegate().state;
        state.newDateFormat = state.oldDateFormat = state.popupSound = "as it was";
        state.popupDisplayArray = state.popupPlayArray = {"as", "it was"};
        state.iPopupEvents = 7;
        state.iSeverityError = kSevere;
        m->show(fullDocument());
        m->click("localeDateFormat");
        m->click("popupEventsDisplay");
        m->click("popupEventsPlay");
        m->click("removalEmergency");
        m->choose("severityError", "Normal");
        m->clickRow("includeFiltersTable", 0);
        m->click("includeFiltersRemove");
        m->options().parentTab = Tab::kTools;
        m->click("onCancel");
        QVERIFY(m->mainWindow.selected == std::vector<Tab>{Tab::kTools});
        QVERIFY(m->nothingWasSent());
        for (const std::string &text :
             {state.newDateFormat, state.oldDateFormat, state.popupSound}) {
            QCOMPARE(toQString(text), QStringLiteral("as it was"));
        }
        const std::vector<std::string> words{"as", "it was"};
        QVERIFY(state.popupDisplayArray == words && state.popupPlayArray == words);
        QCOMPARE(state.iPopupEvents, std::int64_t{7});
        QCOMPARE(state.iSeverityError, std::int64_t{kSevere});
        m->show();
        QVERIFY(m->saveUntouched() == fullDocument());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ToolsViewOptionsTest)
#include "ToolsViewOptionsTest.moc"
#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "core/AppState.h"
