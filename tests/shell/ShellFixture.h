#pragma once

#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "core/EventList.h"
#include "core/LoadedEvents.h"
#include "platform/KeyedArchive.h"
#include "platform/gui/Page.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "shell/ViewController.h"
#include "shell/WindowController.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QAction>
#include <QStackedWidget>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel::testing {

class HomeStandIn : public Page, public HomePageLink {
public:
    [[nodiscard]] bool isOnScreen() const override { return isPageOnScreen(); }
    void setEventsStatus() override { ++refreshed; }
    [[nodiscard]] int severityStatus() const override { return 0; }

    int refreshed = 0;
};

class EventsStandIn : public Page, public EventListPageLink {
public:
    explicit EventsStandIn(AppDelegate &delegate) : m_delegate(delegate) {}

    [[nodiscard]] bool isOnScreen() const override { return isPageOnScreen(); }
    EventId insertEvent(const EventFields &event) override {
        ++insertedOnScreen;
        return m_delegate.events.insertShown(event, m_delegate.state);
    }
    [[nodiscard]] bool canInsertMany() const override { return true; }
    void insertEvents(LoadedEvents events) override {
        insertedOnScreen += static_cast<int>(events.size());
        m_delegate.events.insertAllShown(std::move(events), m_delegate.state);
    }
    void removeEvent(const EventFields &announced) override {
        removed.emplace_back(announced.message.value_or("(none)"));
        removedExtras += announced.others.size();
    }
    void setFilter(const EventQuery &query) override { asked.push_back(query); }

    int insertedOnScreen = 0;
    std::vector<std::string> removed;
    std::size_t removedExtras = 0;
    std::vector<EventQuery> asked;

private:
    AppDelegate &m_delegate;
};

class SettingsPageStandIn : public Page, public SettingsPageLink {};

/// QUORBEL_LIBRARY names a temporary folder while the object lives.
class LibraryFolder {
public:
    LibraryFolder() { qputenv("QUORBEL_LIBRARY", m_folder.path().c_str()); }
    ~LibraryFolder() { qunsetenv("QUORBEL_LIBRARY"); }
    LibraryFolder(const LibraryFolder &) = delete;
    LibraryFolder &operator=(const LibraryFolder &) = delete;

    TemporaryFolder &operator*() { return m_folder; }
    TemporaryFolder *operator->() { return &m_folder; }

    void writeSettings(const Dictionary &settings) const {
        m_folder.write(kSettingsFileName, writeKeyedArchive(settings));
    }

private:
    TemporaryFolder m_folder;
};

/// The shell over pages that record what reaches them. The window is made, not loaded.
struct Shell {
    LibraryFolder library;
    AppDelegate delegate;
    Storyboard storyboard = makeStoryboard();
    WindowController window{delegate, storyboard};

    HomeStandIn &home() { return page<HomeStandIn>(Tab::kHome); }
    EventsStandIn &events() { return page<EventsStandIn>(Tab::kEvents); }
    EventList &list() { return delegate.events; }

    QStackedWidget &tabs() {
        return *window.findChild<QStackedWidget *>(QStringLiteral("tabView"));
    }
    Tab currentTab() { return static_cast<Tab>(tabs().currentIndex()); }
    template <typename PageType>
    PageType &page(Tab tab) {
        return dynamic_cast<PageType &>(*tabs().widget(static_cast<int>(tab)));
    }
    QAbstractButton &button(const char *name) {
        return *window.findChild<QAbstractButton *>(QString::fromLatin1(name));
    }
    QAction &command(const char *name) {
        return *window.findChild<QAction *>(QString::fromLatin1(name));
    }

private:
    Storyboard makeStoryboard() {
        Storyboard result;
        result.add(QStringLiteral("HomeView"), [] { return std::make_unique<HomeStandIn>(); });
        result.add(QStringLiteral("ScanView"),
                   [this] { return std::make_unique<EventsStandIn>(delegate); });
        for (const char *plain : {"ReportsView", "ToolsView"}) {
            result.add(QString::fromLatin1(plain),
                       [] { return std::make_unique<ViewController>(); });
        }
        for (const char *settings :
             {"ToolsViewOptions", "ToolsViewActions", "ToolsViewExport", "HostsView"}) {
            result.add(QString::fromLatin1(settings),
                       [] { return std::make_unique<SettingsPageStandIn>(); });
        }
        return result;
    }
};

}  // namespace quorbel::testing
