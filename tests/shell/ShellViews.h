#pragma once

#include "platform/gui/Sheet.h"
#include "support/FrontEnd.h"

#include <QStackedWidget>
#include <QTest>

#include <algorithm>

namespace quorbel::testing {

/// A sheet, and where it is opened from.
struct SheetCase {
    const char *identifier;
    const char *presenter;
};
constexpr SheetCase kSheets[] = {
    {"aboutView", "HomeView"},           {"eventView", "ScanView"},
    {"filterView", "ToolsViewOptions"},  {"actionView", "ToolsViewActions"},
    {"commandRun", "actionView"},        {"commandEmail", "actionView"},
    {"commandEvent", "actionView"},      {"emailServer", "ToolsViewActions"},
    {"emailFormat", "ToolsViewActions"}, {"emailTest", "ToolsViewActions"}};

constexpr const char *kPages[] = {"HomeView",        "ScanView",         "ReportsView",
                                  "ToolsView",       "ToolsViewOptions", "ToolsViewActions",
                                  "ToolsViewExport", "HostsView"};

/// A row of data for each page and each sheet.
inline void addViews() {
    QTest::addColumn<bool>("isSheet");
    for (const char *page : kPages) {
        QTest::newRow(page) << false;
    }
    for (const SheetCase &sheet : kSheets) {
        QTest::newRow(sheet.identifier) << true;
    }
}

inline QWidget *showPage(const FrontEnd &frontEnd, const char *name) {
    auto *page = frontEnd.window->findChild<QWidget *>(QLatin1String(name));
    frontEnd.control<QStackedWidget>("tabView").setCurrentWidget(page);
    return page;
}

inline QWidget *openSheet(const FrontEnd &frontEnd, const char *identifier) {
    const auto *found = std::ranges::find_if(kSheets, [&](const SheetCase &one) {
        return QLatin1String(one.identifier) == QLatin1String(identifier);
    });
    const bool overASheet = QLatin1String(found->presenter) == QLatin1String("actionView");
    QWidget *presenter =
        overASheet ? openSheet(frontEnd, found->presenter) : showPage(frontEnd, found->presenter);
    auto controller = frontEnd.storyboard.instantiate(QLatin1String(identifier));
    auto *sheet = dynamic_cast<Sheet *>(controller.release());
    sheet->presentOver(presenter);
    return sheet;
}

/// The view of the current row of addViews(), on screen and laid out; null when that fails.
inline QWidget *showView(const FrontEnd &frontEnd) {
    QFETCH(bool, isSheet);
    const char *name = QTest::currentDataTag();
    QWidget *view = isSheet ? openSheet(frontEnd, name) : showPage(frontEnd, name);
    if (view == nullptr || !QTest::qWaitForWindowExposed(view->window())) {
        return nullptr;
    }
    QCoreApplication::processEvents();
    return view;
}

}  // namespace quorbel::testing
