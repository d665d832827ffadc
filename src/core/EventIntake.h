#pragma once

#include "common/LogReader.h"
#include "common/Severity.h"
#include "core/AppState.h"
#include "core/Event.h"
#include "core/LogLoad.h"
#include "core/PageLinks.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

class ArrivalObserver;
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

    /// Each outlives the intake.
    void addObserver(ArrivalObserver &observer) { m_observers.push_back(&observer); }

    /// Takes one new event in and says where it is: in the list, or with the hold while that delays
    /// it. It is counted either way.
    EventPlace setNotification(const EventFields &event);
    /// Whether takeMany() takes many events in with one step, instead of setNotification() and
    /// takeLogged() each.
    [[nodiscard]] bool canTakeMany() const;
    /// The same as setNotification() for each, the first one first; says where that is. The others
    /// have the ids that follow.
    EventPlace takeMany(LoadedArrivals arrivals);
    /// Hands an announced removal on, to wait where events do; counters stay as they are.
    void removeNotification(const EventFields &announced);
    /// The start-up load, before anything is shown or held: counters to zero, the settings into the
    /// state, every log file into the list, oldest file first. Says how far it read those files
    /// that could be opened, in that order: what is added to them from then on is not listed.
    std::vector<LogExtent> initializeLog(const Progress &onProgress = {},
                                         const LogLoad::Shares &shares = {});
    /// The same once more, bit by bit: all that is listed, that waits and that was counted is void;
    /// then each event of the log by takeLogged(), oldest first, and endAnew().
    void beginAnew();
    void takeLogged(const EventFields &event);
    /// The same for many, the first one first.
    void takeLogged(LoadedArrivals logged);
    void endAnew();

    /// Between these two nothing is painted, and the home page is told once for all events.
    void beginMany() { m_isAmongMany = true; }
    void endMany();

private:
    void resetCounters();
    void count(const PriorityClasses &classes, std::optional<std::string_view> date);
    void count(const LoadedArrivals &arrivals);
    EventPlace takeEach(const LoadedEvents &events);
    void noteForHomePage();
    void tellHomePage();

    AppState &m_state;
    EventList &m_events;
    EventHold &m_hold;
    EventListPageLink &m_eventPage;
    HomePageLink &m_homePage;
    std::vector<ArrivalObserver *> m_observers;
    bool m_isAmongMany = false;
    bool m_isHomeDue = false;
};

}  // namespace quorbel
