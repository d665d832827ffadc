#include "actions/ActionView.h"
#include "actions/ToolsViewActions.h"
#include "export/ToolsViewExport.h"
#include "options/OptionsFixture.h"

#include <QAbstractSlider>

#include <functional>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

namespace {

using Edit = std::function<void(SettingsPage &)>;

Edit click(const char *button) {
    return [button](SettingsPage &page) { page.click(button); };
}
Edit type(const char *field, const char *text) {
    return [=](SettingsPage &page) { page.type(field, QString::fromUtf8(text)); };
}
Edit choose(const char *chooser, const char *item) {
    return [=](SettingsPage &page) { page.choose(chooser, item); };
}
Edit step(const char *field) {
    return [field](SettingsPage &page) { QTest::keyClick(&page.control(field), Qt::Key_Up); };
}
/// A record of a list, by the Add button of its page.
Edit add(const char *button) {
    return [button](SettingsPage &page) {
        page.click(button);
        page.click("onSave");
    };
}
/// Presses a button for the first row of a list, and one of the sheet that it opens.
Edit withRow(const char *table, const char *button, const char *sheetButton = nullptr) {
    return [=](SettingsPage &page) {
        page.clickRow(table, 0);
        page.click(button);
        if (sheetButton != nullptr) {
            page.click(sheetButton);
        }
    };
}

/// A document with the keys of all three pages, nothing at its default, and one that none knows.
Dictionary everything() {
    Dictionary document = fullDocument();
    Dictionary action = filter("act");
    for (const char *reaction : {"runCommand", "sendEmail", "setEvent"}) {
        action.set(reaction, Dictionary{});
    }
    document.set("actionsArray", Array{action});
    document.set("textInterval", 10);
    document.set("databaseInterval", 60);
    document.set("textLocation", "/t.txt");
    document.set("databaseLocation", "/d.db");
    document.set("unknown", "first");
    return document;
}

/// Another one, which has no value in common with it.
Dictionary everythingElse() {
    Dictionary document{{"hostsDisplay", false}, {"dateFormat", ""}};
    for (int i = 0; const char *part : kParts) {
        const bool isKept = i % 2 == 0;
        document.set(named("severity", part), i % 3);
        document.set(named("removal", part), isKept ? 0 : 7);
        document.set(named("removal", part, "Units"), isKept ? -1 : (i + 1) % 5);
        ++i;
    }
    document.set("popupEvents", 0);
    document.set("popupDisplayArray", Array{});
    document.set("popupPlayArray", Array{});
    document.set("includeFiltersArray", Array{filter("other")});
    document.set("excludeFiltersArray", Array{});
    document.set("actionsArray", Array{});
    document.set("textInterval", 0);
    document.set("databaseInterval", 0);
    document.set("other", "second");
    return document;
}

/// What the user sees of a page: every control with its name, its state and what it holds.
QString shown(const QWidget &page) {
    QStringList lines;
    for (const QWidget *control : page.findChildren<QWidget *>()) {
        if (control->window() != &page) {
            continue;  // of a sheet that was closed
        }
        if (control->objectName() == u"dateExample"_s) {
            continue;  // it shows the present moment, which goes on
        }
        const auto *table = qobject_cast<const QTableView *>(control);
        QString line = control->objectName() + (control->isEnabled() ? u" on "_s : u" off "_s);
        for (const char *property :
             {"checked", "text", "placeholderText", "currentIndex", "value"}) {
            // Where the page is scrolled to is no value of it.
            if (qobject_cast<const QAbstractSlider *>(control) == nullptr) {
                line += control->property(property).toString() + u'|';
            }
        }
        for (int row = 0; table != nullptr && row < table->model()->rowCount(); ++row) {
            line += table->model()->index(row, 0).data().toString() + u'|' +
                    table->model()->index(row, 1).data().toString() + u'|';
        }
        if (table != nullptr) {
            line += QString::number(table->selectionModel()->selectedRows().size());
        }
        lines += line;
    }
    return lines.join(u'\n');
}

}  // namespace

/// The cycle that all settings pages have in common: load, edit, then Save or Cancel.
class SettingsPagesTest : public QObject {
    Q_OBJECT

private:
    static void addRow(const char *page, const char *name, Edit edit) {
        QTest::addRow("%s %s", page, name) << QByteArray(page) << std::move(edit);
    }
    static void addColumns() {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<Edit>("edit");
    }
    static void addEdits() {
        addColumns();
        const char *page = "ToolsViewOptions";
        for (const char *button :
             {"hostsDisplayIP", "localeDateFormat", "definedDateFormat", "removalError",
              "popupEventsDisplay", "popupEmergencyDisplay", "popupErrorDisplay", "popupEventsPlay",
              "popupAlertingPlay", "popupUnknownPlay"}) {
            addRow(page, button, click(button));
        }
        addRow(page, "userDateFormat", choose("userDateFormat", "d/M/yy"));
        addRow(page, "userTimeFormat", choose("userTimeFormat", "HH:mm"));
        addRow(page, "severityEmergency", choose("severityEmergency", "Normal"));
        addRow(page, "severityUnknown", choose("severityUnknown", "Severe"));
        addRow(page, "removalDebugTime", type("removalDebugTime", "5"));
        addRow(page, "removalDebugTime stepped", step("removalDebugTime"));
        addRow(page, "removalUnknownUnits", choose("removalUnknownUnits", "Weeks"));
        addRow(page, "popupEventsTime", type("popupEventsTime", "5"));
        addRow(page, "popupEventsTime stepped", step("popupEventsTime"));
        addRow(page, "popupSoundFile", type("popupSoundFile", "/other.aiff"));
        addRow(page, "includeFiltersAdd", add("includeFiltersAdd"));
        addRow(page, "includeFiltersEdit",
               withRow("includeFiltersTable", "includeFiltersEdit", "onSave"));
        addRow(page, "includeFiltersRemove",
               withRow("includeFiltersTable", "includeFiltersRemove"));
        addRow(page, "excludeFiltersAdd", add("excludeFiltersAdd"));
        addRow(page, "excludeFiltersEdit",
               withRow("excludeFiltersTable", "excludeFiltersEdit", "onSave"));
        addRow(page, "excludeFiltersRemove",
               withRow("excludeFiltersTable", "excludeFiltersRemove"));
        page = "ToolsViewActions";
        addRow(page, "automaticActionsAdd", add("automaticActionsAdd"));
        addRow(page, "actionsEdit", withRow("actionsTable", "actionsEdit", "onSave"));
        addRow(page, "actionsRemove", withRow("actionsTable", "actionsRemove"));
        page = "ToolsViewExport";
        for (const char *box : {"exportText", "exportDatabase"}) {
            addRow(page, box, click(box));
        }
        for (const char *interval : {"textInterval", "databaseInterval"}) {
            addRow(page, interval, type(interval, "7"));
        }
        for (const char *location : {"textLocation", "databaseLocation"}) {
            addRow(page, location, type(location, "/other"));
        }
    }
    static void addPages() {
        addColumns();
        addRow("ToolsViewOptions", "edited", [](SettingsPage &page) {
            for (const char *button : {"localeDateFormat", "removalError", "popupErrorDisplay",
                                       "popupUnknownPlay", "hostsDisplayIP"}) {
                page.click(button);
            }
            page.type("popupSoundFile", u"/other.aiff"_s);
            withRow("includeFiltersTable", "includeFiltersRemove")(page);
            add("excludeFiltersAdd")(page);
            choose("severityUnknown", "Severe")(page);
        });
        addRow("ToolsViewActions", "edited", add("automaticActionsAdd"));
        addRow("ToolsViewExport", "edited", [](SettingsPage &page) {
            page.type("textLocation", u"/other.txt"_s);
            page.type("databaseInterval", u"7"_s);
        });
    }

    void show(const QByteArray &page, const Dictionary &document) {
        m->write(document);
        m->show(page);
    }
    /// Saves whether or not the button is enabled, and gives what was sent.
    Dictionary send(QWidget &page) {
        dynamic_cast<SettingsEditor &>(page).onSave();
        return m->saved();
    }
    /// That the page, shown once more, is as one that has never been shown before.
    void compareWithNewPage(const QByteArray &identifier) {
        m->show(identifier);
        const auto fresh = m->storyboard.instantiate(QString::fromLatin1(identifier));
        fresh->show();
        QVERIFY(QTest::qWaitForWindowExposed(fresh.get()));
        QVERIFY(!m->isEnabled("saveButton"));
        QCOMPARE(shown(m->page()), shown(*fresh));
        const Dictionary sent = send(m->page());
        QVERIFY(sent.size() > 0);
        QCOMPARE(toQString(textOf(sent)), toQString(textOf(send(*fresh))));
    }

    std::unique_ptr<SettingsPage> m;

private Q_SLOTS:
    void init() {
        m = std::make_unique<SettingsPage>();
        Storyboard &board = m->storyboard;
        board.add(u"ToolsViewOptions"_s, [this] {
            return std::make_unique<ToolsViewOptions>(m->delegate(), m->storyboard);
        });
        board.add(u"ToolsViewActions"_s, [this] {
            return std::make_unique<ToolsViewActions>(m->delegate(), m->storyboard);
        });
        board.add(u"ToolsViewExport"_s,
                  [this] { return std::make_unique<ToolsViewExport>(m->delegate()); });
        board.add(u"filterView"_s, [] { return std::make_unique<ToolsViewFilter>(); });
        board.add(u"actionView"_s, [this] { return std::make_unique<ActionView>(m->storyboard); });
    }
    void cleanup() { m.reset(); }

    void eachEditEnablesSaveAndCancelDropsIt_data() { addEdits(); }
    void eachEditEnablesSaveAndCancelDropsIt() {
        QFETCH(const QByteArray, page);
        QFETCH(const Edit, edit);
        show(page, everything());
        const QString before = shown(m->page());
        QVERIFY(!m->isEnabled("saveButton"));
        edit(*m);
        QCOMPARE(m->openSheetName(), QString());
        QVERIFY(m->isEnabled("saveButton"));
        dynamic_cast<SettingsPageLink &>(m->page()).parentTab = Tab::kEvents;
        m->click("onCancel");
        QCOMPARE(m->mainWindow.selected, std::vector{Tab::kEvents});
        QVERIFY(m->nothingWasSent());
        m->show(page);
        QCOMPARE(shown(m->page()), before);
        QCOMPARE(toQString(textOf(send(m->page()))), toQString(textOf(everything())));
    }

    void looksEnableNothing_data() {
        addColumns();
        const char *page = "ToolsViewOptions";
        for (const char *list : {"include", "exclude"}) {
            static const std::array names{"includeFiltersTable", "includeFiltersEdit",
                                          "excludeFiltersTable", "excludeFiltersEdit"};
            const std::size_t at = list[0] == 'i' ? 0 : 2;
            addRow(page, names[at],
                   [at](SettingsPage &shownPage) { shownPage.clickRow(names[at], 0); });
            addRow(page, names[at + 1], withRow(names[at], names[at + 1], "onCancel"));
        }
        addRow(page, "popupSoundFile", [](SettingsPage &shownPage) {
            QTest::mouseClick(&shownPage.control("popupSoundFile"), Qt::LeftButton);
        });
        page = "ToolsViewActions";
        addRow(page, "actionsTable",
               [](SettingsPage &shownPage) { shownPage.clickRow("actionsTable", 0); });
        addRow(page, "actionsEdit", withRow("actionsTable", "actionsEdit", "onCancel"));
        addRow("ToolsViewExport", "textLocation", [](SettingsPage &shownPage) {
            QTest::mouseClick(&shownPage.control("textLocation"), Qt::LeftButton);
        });
    }
    void looksEnableNothing() {
        QFETCH(const QByteArray, page);
        QFETCH(const Edit, edit);
        show(page, everything());
        edit(*m);
        QVERIFY(!m->isEnabled("saveButton"));
        QCOMPARE(toQString(textOf(send(m->page()))), toQString(textOf(everything())));
    }

    void eachShowingStartsOver_data() { addPages(); }
    void eachShowingStartsOver() {
        QFETCH(const QByteArray, page);
        QFETCH(const Edit, edit);
        for (const Dictionary &document : {everythingElse(), everything(), Dictionary{}}) {
            show(page, everything());
            edit(*m);
            QVERIFY(m->isEnabled("saveButton"));
            m->write(document);
            compareWithNewPage(page);
        }
    }

    void aDocumentThatIsGoneLeavesTheDefaults_data() { addPages(); }
    void aDocumentThatIsGoneLeavesTheDefaults() {
        QFETCH(const QByteArray, page);
        QFETCH(const Edit, edit);
        show(page, everything());
        edit(*m);
        QVERIFY(std::filesystem::remove(m->library() / kSettingsFileName));
        compareWithNewPage(page);
    }

    void saveReturnsWhereThePageWasOpened_data() { addPages(); }
    void saveReturnsWhereThePageWasOpened() {
        QFETCH(const QByteArray, page);
        QFETCH(const Edit, edit);
        for (const Tab parent : {Tab::kEvents, Tab::kTools}) {
            show(page, everything());
            dynamic_cast<SettingsPageLink &>(m->page()).parentTab = parent;
            edit(*m);
            m->click("saveButton");
            QCOMPARE(m->mainWindow.selected.back(), parent);
            const Dictionary sent = m->saved();
            QVERIFY(!(sent == everything()));
            QCOMPARE(at(sent, "unknown"), u"\"first\""_s);
        }
        QVERIFY(m->nothingWasSent());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::SettingsPagesTest)
#include "SettingsPagesTest.moc"
