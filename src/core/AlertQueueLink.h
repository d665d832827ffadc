#pragma once

#include "core/Event.h"

namespace quorbel {

/// The alert worker's queue, as the handler of notifications reaches it.
class AlertQueueLink {
public:
    virtual ~AlertQueueLink() = default;

    /// Appends a new event to `popupArray`. Called on the main thread.
    virtual void append(Event event) = 0;

protected:
    AlertQueueLink() = default;
    AlertQueueLink(const AlertQueueLink &) = default;
    AlertQueueLink &operator=(const AlertQueueLink &) = default;
};

}  // namespace quorbel
