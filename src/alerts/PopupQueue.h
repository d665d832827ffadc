#pragma once

#include <cstddef>

namespace quorbel {

/// What waits behind a popup, as that reaches it. Main thread only.
class PopupQueue {
public:
    virtual ~PopupQueue() = default;

    /// How many of the waiting events get a popup as the settings are now. Takes as long whether
    /// ten of them wait or a million.
    [[nodiscard]] virtual std::size_t waitingPopups() = 0;
    /// Drops all that wait, those with a sound alone included; what comes later has its alert.
    virtual void skipAll() = 0;

protected:
    PopupQueue() = default;
    PopupQueue(const PopupQueue &) = default;
    PopupQueue &operator=(const PopupQueue &) = default;
};

}  // namespace quorbel
