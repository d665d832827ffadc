#pragma once

#include "core/AppDelegate.h"

#include <utility>
#include <vector>

namespace quorbel::testing {

/// A main window that notes where a page's links lead.
class WindowStandIn : public MainWindowLink {
public:
    void Home() override {}
    void Scan() override {}
    void Reports() override {}
    void Tools() override {}
    void About() override {}
    void makeVisible() override {}
    void selectTab(Tab page) override { selected.push_back(page); }
    void openSettingsPage(Tab page, Tab parentTab) override {
        opened.emplace_back(page, parentTab);
    }
    void proposeRecord(Tab page, Tab parentTab, const Dictionary &record) override {
        opened.emplace_back(page, parentTab);
        proposed.push_back(record);
    }
    void showEvents(const EventQuery &query) override { asked.push_back(query); }

    std::vector<Tab> selected;
    std::vector<std::pair<Tab, Tab>> opened;
    std::vector<Dictionary> proposed;
    std::vector<EventQuery> asked;
};

}  // namespace quorbel::testing
