#pragma once

#include "core/Event.h"
#include "core/EventQuery.h"
#include "platform/Value.h"

#include <memory>

namespace quorbel {

class LoadedEvents;

// What the shell and the pages see of one another. A page includes no other page's header.

/// The tabs of the main window, in their fixed order.
enum class Tab { kHome, kEvents, kReports, kTools, kOptions, kActions, kExport, kHosts };

/// The main window, as the delegate and the pages reach it.
class MainWindowLink {
public:
    virtual ~MainWindowLink() = default;

    virtual void Home() = 0;
    virtual void Scan() = 0;
    virtual void Reports() = 0;
    virtual void Tools() = 0;
    virtual void About() = 0;
    /// Shows the window again after it was closed or minimised, and raises it.
    virtual void makeVisible() = 0;

    /// Opens a page that is a SettingsPageLink, from 4 on, and records the page that it returns to.
    virtual void openSettingsPage(Tab page, Tab parentTab) = 0;
    virtual void selectTab(Tab page) = 0;
    /// Opens a settings page that is a RecordPageLink as openSettingsPage() does, and its editor
    /// for a new record with these values.
    virtual void proposeRecord(Tab page, Tab parentTab, const Dictionary &record) = 0;
    /// Opens the events page and asks there for these events alone, in place of what was asked for.
    /// Main thread only.
    virtual void showEvents(const EventQuery &query) = 0;

protected:
    MainWindowLink() = default;
    MainWindowLink(const MainWindowLink &) = default;
    MainWindowLink &operator=(const MainWindowLink &) = default;
};

/// The home page, as the intake reaches it.
class HomePageLink {
public:
    virtual ~HomePageLink() = default;

    [[nodiscard]] virtual bool isOnScreen() const = 0;
    virtual void setEventsStatus() = 0;
    /// The overall rating now shown (SeverityLevel).
    [[nodiscard]] virtual int severityStatus() const = 0;

protected:
    HomePageLink() = default;
    HomePageLink(const HomePageLink &) = default;
    HomePageLink &operator=(const HomePageLink &) = default;
};

/// The event list page, as the intake reaches it. The events themselves are the delegate's.
class EventListPageLink {
public:
    virtual ~EventListPageLink() = default;

    [[nodiscard]] virtual bool isOnScreen() const = 0;
    /// Puts a new event at the top while the page is on screen, and returns its id.
    virtual EventId insertEvent(const EventFields &event) = 0;
    /// Whether many events that come at a time are quickly put where the page has them.
    [[nodiscard]] virtual bool canInsertMany() const = 0;
    /// The same as insertEvent() for each, the first one first.
    virtual void insertEvents(LoadedEvents events) = 0;
    /// Takes out an event that the service removed, as it was announced.
    virtual void removeEvent(const EventFields &announced) = 0;
    /// Asks for these events alone: the filter bar says so, in place of what it said.
    virtual void setFilter(const EventQuery &query) = 0;

protected:
    EventListPageLink() = default;
    EventListPageLink(const EventListPageLink &) = default;
    EventListPageLink &operator=(const EventListPageLink &) = default;
};

/// The events above and below the one that a details sheet shows, where its presenter is no list of
/// events.
class EventSteps {
public:
    virtual ~EventSteps() = default;

    /// Whether there is one above (-1), or below (1).
    [[nodiscard]] virtual bool canStep(int direction) = 0;
    /// Goes there and returns it. Precondition: canStep(direction).
    virtual Event step(int direction) = 0;

protected:
    EventSteps() = default;
    EventSteps(const EventSteps &) = default;
    EventSteps &operator=(const EventSteps &) = default;
};

/// The details sheet of one event, as those who open it through the storyboard ("eventView") see
/// it.
class EventSheetLink {
public:
    virtual ~EventSheetLink() = default;

    /// The event to show. Called before the sheet is presented.
    virtual void setDict(const Event &event) = 0;
    /// Whether the sheet goes without the buttons that step to the events beside it; false at
    /// first. They need a presenter that is a list, or steps.
    virtual void setHideButtons(bool hide) = 0;
    /// Where the buttons step to, which the sheet keeps as long as it lives. Called before it is
    /// presented.
    virtual void setSteps(std::shared_ptr<EventSteps> steps) = 0;

protected:
    EventSheetLink() = default;
    EventSheetLink(const EventSheetLink &) = default;
    EventSheetLink &operator=(const EventSheetLink &) = default;
};

/// A page without an entry of its own, which remembers where it returns to.
class SettingsPageLink {
public:
    virtual ~SettingsPageLink() = default;

    Tab parentTab = Tab::kTools;

protected:
    SettingsPageLink() = default;
    SettingsPageLink(const SettingsPageLink &) = default;
    SettingsPageLink &operator=(const SettingsPageLink &) = default;
};

/// A settings page with a list of filter records, which another page can propose one to.
class RecordPageLink {
public:
    virtual ~RecordPageLink() = default;

    /// Opens the page's editor for a new record with these values: those of FilterForm, and as
    /// "Host" a host's name that none of them stands for. The user changes, saves or drops it.
    /// Called while the page is on screen.
    virtual void propose(const Dictionary &record) = 0;

protected:
    RecordPageLink() = default;
    RecordPageLink(const RecordPageLink &) = default;
    RecordPageLink &operator=(const RecordPageLink &) = default;
};

}  // namespace quorbel
