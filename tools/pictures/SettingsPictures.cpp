#include "PictureStage.h"

namespace quorbel {

namespace {

void openOptions(const Stage &stage) {
    stage.click("Tools");
    stage.click("toolsOptions");
}

void openActions(const Stage &stage) {
    stage.click("Tools");
    stage.click("toolsActions");
}

void editFirstAction(const Stage &stage) {
    openActions(stage);
    stage.clickRow("ToolsViewActions", "actionsTable", 0);
    stage.click("actionsEdit");
}

/// Opens a sheet of the action editor.
std::function<void(Stage &)> editing(const char *link) {
    return [link](const Stage &stage) {
        editFirstAction(stage);
        stage.click(link);
    };
}

/// Opens a sheet of the actions page.
std::function<void(Stage &)> fromActions(const char *link) {
    return [link](const Stage &stage) {
        openActions(stage);
        stage.click(link);
    };
}

}  // namespace

std::vector<Picture> hostPictures() {
    const auto nothing = [](Stage & /*stage*/) {};
    const auto openHosts = [](const Stage &stage) {
        stage.click("Tools");
        stage.click("toolsHosts");
    };
    return {
        {"home-weeks", Sample::kWeeks, "WindowController", nothing},
        {"home-silent", Sample::kSilentHosts, "WindowController", nothing},
        {"home-first-day", Sample::kFirstDay, "WindowController", nothing},
        {"home-silent-small", Sample::kSilentHosts, "WindowController",
         [](const Stage &stage) {
             stage.window->setMinimumSize(0, 0);
             stage.window->resize(800, 500);
         }},
        {"hosts", Sample::kSilentHosts, "WindowController",
         [openHosts](const Stage &stage) {
             openHosts(stage);
             stage.clickRow("HostsView", "hostTable", 0);
         }},
        {"hosts-empty", Sample::kEmpty, "WindowController", openHosts},
        {"hosts-small", Sample::kSilentHosts, "WindowController",
         [openHosts](const Stage &stage) {
             openHosts(stage);
             stage.window->setMinimumSize(0, 0);
             stage.window->resize(800, 500);
             stage.clickRow("HostsView", "hostTable", 0);
         }},
    };
}

std::vector<Picture> settingsPictures() {
    const auto optionsAt = [](const char *name) {
        return [name](const Stage &stage) {
            openOptions(stage);
            stage.scrollTo("scrollView", name);
        };
    };
    return {
        {"tools", Sample::kBad, "WindowController", [](Stage &stage) { stage.click("Tools"); }},
        {"options", Sample::kBad, "WindowController", openOptions},
        {"options-retention", Sample::kBad, "WindowController", optionsAt("removalEmergency")},
        {"options-removes", Sample::kBad, "WindowController",
         [optionsAt](Stage &stage) {
             optionsAt("removalEmergency")(stage);
             stage.click("removalWarning");
             stage.click("removalWarning");
             QTest::qWait(2 * kSettleMs);
         }},
        {"options-alerts", Sample::kBad, "WindowController", optionsAt("popupEventsDisplay")},
        {"options-filters", Sample::kBad, "WindowController", optionsAt("includeFiltersTable")},
        {"options-empty", Sample::kEmpty, "WindowController", openOptions},
        {"filter", Sample::kBad, "filterView",
         [](Stage &stage) {
             openOptions(stage);
             stage.scrollTo("scrollView", "excludeFiltersTable");
             stage.clickRow("ToolsViewOptions", "excludeFiltersTable", 1);
             stage.click("excludeFiltersEdit");
         }},
        {"actions", Sample::kBad, "WindowController", openActions},
        {"actions-empty", Sample::kEmpty, "WindowController", openActions},
        {"action", Sample::kBad, "actionView", editFirstAction},
        {"action-run", Sample::kBad, "commandRun", editing("actionRunText")},
        {"action-email", Sample::kBad, "commandEmail", editing("actionEmailText")},
        {"action-event", Sample::kBad, "commandEvent", editing("actionEventText")},
        {"email-server", Sample::kBad, "emailServer", fromActions("emailServer")},
        {"email-format", Sample::kBad, "emailFormat", fromActions("emailFormat")},
        {"email-test", Sample::kBad, "emailTest", fromActions("emailTest")},
        {"export", Sample::kBad, "WindowController",
         [](Stage &stage) {
             stage.click("Tools");
             stage.click("toolsExport");
         }},
    };
}

}  // namespace quorbel
