#pragma once

#include "common/EventFields.h"

#include <cstdint>

namespace quorbel {

class LoadedEvents;

/// Hears of each event that arrives, whether it is listed at once or held.
class ArrivalObserver {
public:
    virtual ~ArrivalObserver() = default;
    /// Not called for those that are read with the whole log. `severityClass` is
    /// PriorityClasses::shown.
    virtual void eventArrived(const EventFields &event, std::uint8_t severityClass) = 0;
    /// The same for many, the first one first.
    virtual void eventsArrived(const LoadedEvents &events) = 0;
    /// The start-up load is over: the list holds what the log files have.
    virtual void logWasLoaded() = 0;
    /// What arrived and was loaded until now is void: the log is read anew, and logWasLoaded() is
    /// called again then.
    virtual void logBeginsAnew() = 0;

protected:
    ArrivalObserver() = default;
    ArrivalObserver(const ArrivalObserver &) = default;
    ArrivalObserver &operator=(const ArrivalObserver &) = default;
};

}  // namespace quorbel
