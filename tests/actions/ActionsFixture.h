#pragma once

#include "actions/ActionCommandEmail.h"
#include "actions/ActionCommandEvent.h"
#include "actions/ActionCommandRun.h"
#include "actions/ActionView.h"
#include "actions/ActionsEmailFormat.h"
#include "actions/ActionsEmailServer.h"
#include "actions/ActionsEmailTest.h"
#include "actions/ToolsViewActions.h"
#include "common/SettingsDocument.h"
#include "support/SettingsPage.h"

#include <memory>

namespace quorbel::testing {

inline QString asText(const Value &value) {
    return toQString(textOf(value));
}

/// Values of all sorts that no text or number can be read from.
inline Array otherTypes() {
    return {Array{1}, Dictionary{{"a", 1}}, Null{}, Data{"x"}, Date{1.5}};
}

// The reactions of an action, switched on.
inline const Dictionary kRun{{"Command", "/bin/true"}, {"Arguments", ""}, {"Environment", ""}};
inline const Dictionary kEmail{{"Recipients", Array{"a@example.com"}}};
inline const Dictionary kEvent{{"Type", "Warning"}, {"Format", "$message"}};

/// The actions page with its sheets.
class ActionsPage : public SettingsPage {
public:
    ActionsPage() {
        storyboard.add(QStringLiteral("page"), [this] {
            return std::make_unique<ToolsViewActions>(delegate(), storyboard);
        });
        storyboard.add(QStringLiteral("actionView"),
                       [this] { return std::make_unique<ActionView>(storyboard); });
        storyboard.add(QStringLiteral("commandRun"),
                       [] { return std::make_unique<ActionCommandRun>(); });
        storyboard.add(QStringLiteral("commandEmail"),
                       [] { return std::make_unique<ActionCommandEmail>(); });
        storyboard.add(QStringLiteral("commandEvent"),
                       [] { return std::make_unique<ActionCommandEvent>(); });
        storyboard.add(QStringLiteral("emailServer"),
                       [this] { return std::make_unique<ActionsEmailServer>(delegate()); });
        storyboard.add(QStringLiteral("emailFormat"),
                       [this] { return std::make_unique<ActionsEmailFormat>(delegate()); });
        storyboard.add(QStringLiteral("emailTest"),
                       [this] { return std::make_unique<ActionsEmailTest>(delegate()); });
    }

    void show() { SettingsPage::show("page"); }

    /// Shows the page, over these settings if any are given, and opens one of the e-mail sheets.
    void open(const QByteArray &sheet) {
        show();
        click(sheet);
        QCOMPARE(openSheetName(), QString::fromLatin1(sheet));
    }
    void open(const QByteArray &sheet, const Dictionary &settings) {
        write(settings);
        open(sheet);
    }

    void writeActions(const Array &actions) const { write({{"actionsArray", actions}}); }
    /// Opens the page with one action, and its editor.
    void edit(const Value &action) {
        writeActions({action});
        show();
        clickRow("actionsTable", 0);
        click("actionsEdit");
        QCOMPARE(openSheetName(), QStringLiteral("actionView"));
    }
    /// Saves the page, and tells which actions the document then has.
    QString savedActions() {
        click("saveButton");
        return asText(settingArray(saved(), "actionsArray"));
    }

    /// An action as the editor stores it.
    static Dictionary action(const char *name, Dictionary runCommand = {},
                             Dictionary sendEmail = {}, Dictionary setEvent = {}) {
        return {{"Name", name},
                {"IP", "0.0.0.0"},
                {"Message", "*"},
                {"Mask", "0"},
                {"Facility", "Any"},
                {"Severity", "Any"},
                {"runCommand", std::move(runCommand)},
                {"sendEmail", std::move(sendEmail)},
                {"setEvent", std::move(setEvent)}};
    }
};

}  // namespace quorbel::testing
