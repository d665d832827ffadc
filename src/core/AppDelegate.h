#pragma once

#include "core/AppState.h"
#include "core/EventHold.h"
#include "core/EventList.h"
#include "core/HostWatch.h"
#include "core/LastSave.h"
#include "core/PageLinks.h"
#include "core/ServiceState.h"
#include "platform/LineCommand.h"
#include "platform/Mutex.h"
#include "platform/Value.h"
#include "platform/bus/CommandSender.h"

#include <optional>
#include <string>

namespace quorbel {

/// The application's delegate: the state and the events that all pages share, and the way to the
/// service. Reached by every page; main thread only, but for the alert lock and what it guards.
class AppDelegate {
public:
    AppDelegate();

    AppState state;
    /// The events: all of them, whatever a page shows of them. They outlive the pages, and so
    /// whatever shows or awaits one of them.
    EventList events;
    /// What is new while the user has the list held.
    EventHold hold{events};
    /// What the service says of itself.
    ServiceState service;
    /// What became of the settings that were saved last.
    LastSave lastSave;
    /// Who sends, and who has fallen silent.
    HostWatch hosts{events};

    /// Replaces the four alert settings in `state` together: the alert worker never sees some of
    /// them old and some new. Once the worker runs, nothing else may write them.
    void setAlertSettings(AlertSettings settings);
    /// Guards the alert settings and the alert worker's queue. The main thread may read the
    /// settings without it.
    Mutex &alertLock() RETURNS_LOCK(m_alertLock) { return m_alertLock; }

    /// The bytes of the settings document, or nothing when it cannot be read.
    [[nodiscard]] static std::optional<std::string> readSettings();
    /// Sends the whole document to the service, which stores it. Whether it did, `lastSave` tells.
    void saveSettings(Dictionary settings);
    /// Sends one command to the service and returns at once. `onAnswer` is called on the sender's
    /// thread.
    void setPipe(Dictionary command, CommandSender::AnswerHandler onAnswer = {});
    void setPipe(LineCommand command, CommandSender::AnswerHandler onAnswer = {});

    // Application-level commands: show the main window again and forward to it. They do nothing
    // before the window exists.
    void setMainWindow(MainWindowLink *window) { m_window = window; }
    [[nodiscard]] MainWindowLink *mainWindow() const { return m_window; }
    void Home();
    void Scan();
    void Reports();
    void Tools();
    void About();

private:
    void forward(void (MainWindowLink::*command)());

    Mutex m_alertLock;
    CommandSender m_sender;
    MainWindowLink *m_window = nullptr;
};

}  // namespace quorbel
