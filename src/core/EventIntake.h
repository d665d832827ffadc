#pragma once

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/Event.h"
#include "core/PageLinks.h"

#include <cstdint>
#include <functional>

namespace quorbel {

class EventHold;
class EventList;

/// The one way in for events, live ones and those of the log files: counts each by severity and
/// hands it to the event list and the home page. Main thread only.
class EventIntake {
public:
    /// Called now and then during the start-up load, with the bytes read so far and those that the
    /// log files hold.
    using Progress = std::function<void(std::uint64_t read, std::uint64_t total)>;

    /// All outlive the intake.
    EventIntake(AppState &state, EventList &events, EventHold &hold, EventListPageLink &page,
                HomePageLink &home);

    /// Takes one new event in and says where it is: in the list, or with the hold while that delays
    /// it. It is counted either way.
    EventPlace setNotification(const EventFields &event);
    /// Hands an announced removal on, to wait where events do; counters stay as they are.
    void removeNotification(const EventFields &announced);
    /// The start-up load: counters to zero, the settings into the state, every log file into the
    /// list, oldest file first.
    void initializeLog(const Progress &onProgress = {});

private:
    void count(const PriorityClasses &classes);

    AppState &m_state;
    EventList &m_events;
    EventHold &m_hold;
    EventListPageLink &m_eventPage;
    HomePageLink &m_homePage;
};

}  // namespace quorbel
