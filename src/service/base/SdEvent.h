#pragma once

#include <systemd/sd-event.h>

#include <cstdint>
#include <memory>
#include <stdexcept>

namespace quorbel {

struct UnrefEventLoop {
    void operator()(sd_event *loop) const { sd_event_unref(loop); }
};
using EventLoopPointer = std::unique_ptr<sd_event, UnrefEventLoop>;

struct DisableEventSource {
    void operator()(sd_event_source *source) const { sd_event_source_disable_unref(source); }
};
/// Once this is gone, the source's handler is not called again.
using EventSourcePointer = std::unique_ptr<sd_event_source, DisableEventSource>;

/// Watches a descriptor. `handler` gets `self` as its user data. Null when the loop has no room.
inline EventSourcePointer watchInput(sd_event *loop, int fd, sd_event_io_handler_t handler,
                                     void *self) {
    sd_event_source *source = nullptr;
    // EPOLLIN, without the header's untyped macro of the same name.
    constexpr std::uint32_t kReadable = 1;
    sd_event_add_io(loop, &source, fd, kReadable, handler, self);
    return EventSourcePointer(source);
}

/// For sources without which the service would be deaf: throws when there is none.
inline EventSourcePointer required(EventSourcePointer source) {
    if (!source) {
        throw std::runtime_error("The event loop cannot take more sources");
    }
    return source;
}

}  // namespace quorbel
