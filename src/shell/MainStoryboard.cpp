#include "shell/MainStoryboard.h"

#include "about/AboutView.h"
#include "actions/ActionCommandEmail.h"
#include "actions/ActionCommandEvent.h"
#include "actions/ActionCommandRun.h"
#include "actions/ActionView.h"
#include "actions/ActionsEmailFormat.h"
#include "actions/ActionsEmailServer.h"
#include "actions/ActionsEmailTest.h"
#include "actions/ToolsViewActions.h"
#include "alerts/PopupWindow.h"
#include "core/AppDelegate.h"
#include "events/ScanView.h"
#include "events/ScanViewEvent.h"
#include "export/ToolsViewExport.h"
#include "home/HomeView.h"
#include "hosts/HostBoxes.h"
#include "hosts/HostsView.h"
#include "options/ToolsView.h"
#include "options/ToolsViewFilter.h"
#include "options/ToolsViewOptions.h"
#include "platform/gui/Storyboard.h"
#include "reports/ReportsView.h"

#include <memory>

namespace quorbel {

namespace {

void addActions(Storyboard &storyboard, AppDelegate &delegate) {
    storyboard.add(QStringLiteral("ToolsViewActions"), [&delegate, &storyboard] {
        return std::make_unique<ToolsViewActions>(delegate, storyboard);
    });
    storyboard.add(QStringLiteral("actionView"),
                   [&storyboard] { return std::make_unique<ActionView>(storyboard); });
    storyboard.add(QStringLiteral("commandRun"),
                   [] { return std::make_unique<ActionCommandRun>(); });
    storyboard.add(QStringLiteral("commandEmail"),
                   [] { return std::make_unique<ActionCommandEmail>(); });
    storyboard.add(QStringLiteral("commandEvent"),
                   [] { return std::make_unique<ActionCommandEvent>(); });
    storyboard.add(QStringLiteral("emailServer"),
                   [&delegate] { return std::make_unique<ActionsEmailServer>(delegate); });
    storyboard.add(QStringLiteral("emailFormat"),
                   [&delegate] { return std::make_unique<ActionsEmailFormat>(delegate); });
    storyboard.add(QStringLiteral("emailTest"),
                   [&delegate] { return std::make_unique<ActionsEmailTest>(delegate); });
}

}  // namespace

void fillMainStoryboard(Storyboard &storyboard, AppDelegate &delegate) {
    storyboard.add(QStringLiteral("HomeView"), [&delegate] {
        auto page = std::make_unique<HomeView>(delegate);
        page->setHostBoxes(*new HostBoxes(delegate));
        return page;
    });
    storyboard.add(QStringLiteral("HostsView"),
                   [&delegate] { return std::make_unique<HostsView>(delegate); });
    storyboard.add(QStringLiteral("ScanView"), [&delegate, &storyboard] {
        return std::make_unique<ScanView>(delegate, storyboard);
    });
    storyboard.add(QStringLiteral("aboutView"), [] { return std::make_unique<AboutView>(); });
    storyboard.add(QStringLiteral("eventView"), [] { return std::make_unique<ScanViewEvent>(); });
    storyboard.add(QStringLiteral("ToolsView"),
                   [&delegate] { return std::make_unique<ToolsView>(delegate); });
    storyboard.add(QStringLiteral("ToolsViewOptions"), [&delegate, &storyboard] {
        return std::make_unique<ToolsViewOptions>(delegate, storyboard);
    });
    storyboard.add(QStringLiteral("filterView"),
                   [] { return std::make_unique<ToolsViewFilter>(); });
    storyboard.add(QStringLiteral("popupWindow"),
                   [&storyboard] { return std::make_unique<PopupWindow>(storyboard); });
    addActions(storyboard, delegate);
    storyboard.add(QStringLiteral("ToolsViewExport"),
                   [&delegate] { return std::make_unique<ToolsViewExport>(delegate); });
    storyboard.add(QStringLiteral("ReportsView"), [&delegate, &storyboard] {
        return std::make_unique<ReportsView>(delegate, storyboard);
    });
}

}  // namespace quorbel
