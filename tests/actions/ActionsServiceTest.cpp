// The settings of actions, e-mail and export on their way through the real service and back.

#include "actions/ActionsFixture.h"
#include "export/ToolsViewExport.h"
#include "platform/Files.h"
#include "support/ServiceProcess.h"

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

class ActionsServiceTest : public QObject {
    Q_OBJECT

private:
    // Waits until the service has stored a document that holds this key, as the page then reads it.
    static Dictionary storedWith(std::string_view key) {
        Dictionary settings;
        waitUntil([&] {
            settings = decodeSettings(AppDelegate::readSettings()).value_or(Dictionary{});
            return settings.find(key) != nullptr;
        });
        return settings;
    }

private Q_SLOTS:
    void everySheetsKeysComeBack() {
        ActionsPage page;
        page.endService();
        ServiceProcess service({.library = page.library(), .busAddress = page.busAddress()});
        QVERIFY2(service.waitForJournal("Connected to the system bus"), service.journal().c_str());

        page.show();
        page.click("emailServer");
        page.type("serverName", u"mail.example.com"_s);
        page.type("serverPassword", u"ü\"' "_s);
        page.choose("serverSecurity", "STARTTLS");
        page.click("onSave");
        QVERIFY(storedWith("actionsEmailServer").find("actionsEmailPort") != nullptr);
        page.click("emailFormat");
        page.click("sendBody");
        page.type("textBody", u"$host\n\n$message"_s);
        page.click("onSave");
        QVERIFY(storedWith("actionsFormatBody").find("actionsEmailServer") != nullptr);

        page.show();
        page.click("automaticActionsAdd");
        page.click("actionRun");
        page.type("taskCommand", u"/bin/true"_s);
        page.type("taskEnvironment", u"A=ü\nB=c"_s);
        page.click("onSave");
        page.click("actionEmail");
        page.type("recipientEmail", u"a@example.com"_s);
        page.click("addRecipient");
        page.click("onSave");
        page.click("thresholdOn");
        page.choose("thresholdHosts", "from one host");
        page.click("onSave");
        page.click("saveButton");
        const Dictionary stored = storedWith("actionsArray");
        Dictionary action = ActionsPage::action(
            "New Action",
            {{"Command", "/bin/true"}, {"Arguments", ""}, {"Environment", "A=ü\nB=c"}},
            {{"Recipients", Array{"a@example.com"}}});
        action.set("threshold", Dictionary{{"Matches", 5}, {"Minutes", 10}, {"PerHost", true}});
        const Dictionary expected{
            {"actionsEmailPort", 25},
            {"actionsEmailTimeout", 1},
            {"actionsEmailServer", "mail.example.com"},
            {"actionsEmailSender", ""},
            {"actionsEmailUsername", ""},
            {"actionsEmailPassword", "ü\"' "},
            {"actionsEmailSecurity", "STARTTLS"},
            {"actionsFormatSubject", ""},
            {"actionsFormatBody", "$host\n\n$message"},
            {"actionsArray", Array{action}},
        };
        QCOMPARE(asText(stored), asText(expected));

        page.show();
        QCOMPARE(page.rows("actionsTable"), u"New Action"_s);
        page.clickRow("actionsTable", 0);
        page.click("actionsEdit");
        QVERIFY(page.isChecked("actionRun") && page.isChecked("actionEmail"));
        page.click("actionRunText");
        QCOMPARE(page.area("taskEnvironment"), u"A=ü\nB=c"_s);
        page.click("onCancel");
        QVERIFY(page.isChecked("thresholdOn") &&
                page.chosen("thresholdHosts") == u"from one host"_s);
        page.click("onCancel");
        page.click("emailServer");
        QCOMPARE(page.text("serverPassword"), u"ü\"' "_s);
        QCOMPARE(page.chosen("serverSecurity"), u"STARTTLS"_s);
        QCOMPARE(service.terminate(), std::optional(0));
    }

    void theExportComesBack() {
        SettingsPage page;
        page.storyboard.add(u"page"_s,
                            [&page] { return std::make_unique<ToolsViewExport>(page.delegate()); });
        page.endService();
        ServiceProcess service({.library = page.library(), .busAddress = page.busAddress()});
        QVERIFY2(service.waitForJournal("Connected to the system bus"), service.journal().c_str());
        page.show("page");
        page.click("exportText");
        page.type("textInterval", u"1440"_s);
        page.type("textLocation", toQString((page.library() / "events.txt").string()));
        page.click("saveButton");
        QCOMPARE(storedWith("textInterval").size(), 3U);
        page.show("page");
        QVERIFY(page.isChecked("exportText"));
        QCOMPARE(page.text("textInterval"), u"1440"_s);
        QCOMPARE(page.text("textLocation"), toQString((page.library() / "events.txt").string()));
        QCOMPARE(service.terminate(), std::optional(0));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ActionsServiceTest)
#include "ActionsServiceTest.moc"
#include "common/SettingsDocument.h"
