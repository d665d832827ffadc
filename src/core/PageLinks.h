#pragma once

#include "core/Event.h"
#include "platform/Value.h"

namespace quorbel {

// What the shell and the pages see of one another. A page includes no other page's header.

/// The tabs of the main window, in their fixed order.
enum class Tab { kHome, kEvents, kReports, kTools, kOptions, kActions, kExport };

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

    /// Opens one of the settings pages 4 to 6 and records the page that it returns to.
    virtual void openSettingsPage(Tab page, Tab parentTab) = 0;
    virtual void selectTab(Tab page) = 0;
    /// Opens a settings page that is a RecordPageLink as openSettingsPage() does, and its editor
    /// for a new record with these values.
    virtual void proposeRecord(Tab page, Tab parentTab, const Dictionary &record) = 0;

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
    /// Takes out an event that the service removed, as it was announced.
    virtual void removeEvent(const EventFields &announced) = 0;

protected:
    EventListPageLink() = default;
    EventListPageLink(const EventListPageLink &) = default;
    EventListPageLink &operator=(const EventListPageLink &) = default;
};

/// The details sheet of one event, as those who open it through the storyboard ("eventView") see
/// it.
class EventSheetLink {
public:
    virtual ~EventSheetLink() = default;

    /// The event to show. Called before the sheet is presented.
    virtual void setDict(const Event &event) = 0;
    /// Whether the sheet goes without the buttons that step to the events beside it; false at
    /// first. They need a presenter that is a list.
    virtual void setHideButtons(bool hide) = 0;

protected:
    EventSheetLink() = default;
    EventSheetLink(const EventSheetLink &) = default;
    EventSheetLink &operator=(const EventSheetLink &) = default;
};

/// A settings page that remembers where Save and Cancel return to.
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
