#pragma once

#include "platform/bus/Checkpoint.h"
#include "platform/bus/SdBus.h"
#include "service/base/SdEvent.h"
#include "service/bus/Listeners.h"
#include "service/bus/NotificationQueue.h"
#include "service/store/LogStore.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace quorbel {

/// How the notifications go over the bus: few of them one by one, to everybody; many of them in
/// batches, to those who listen to these, as fast as they take them in. Loop thread only.
///
/// Who listens hears of everything: while one takes nothing, the queue fills, and what is dropped
/// then shows in the numbers that come with the next batch, or within a second.
class NotificationSender {
public:
    /// What is known of the removals that wait to be told.
    struct Removals {
        std::uint64_t untold = 0;  ///< so many were never handed to the queue
        bool areTold = true;       ///< none is on its way there
    };
    using RemovalsNow = std::function<Removals()>;

    /// From so many on, they travel together.
    static constexpr std::size_t kMany = 64;

    /// All outlive the object; so does the loop.
    NotificationSender(sd_event *loop, NotificationQueue &queue, LogStore &store,
                       RemovalsNow removals);
    NotificationSender(const NotificationSender &) = delete;
    NotificationSender &operator=(const NotificationSender &) = delete;

    /// Offers "Listen" and "Taken" on a connection; as sd-bus does.
    int addTo(sd_bus *bus);
    /// That connection is no more: nobody listens.
    void leave();

    /// Whether send() would send something now, as far as the connection takes it.
    [[nodiscard]] bool canSend();
    enum class Sent { kSingle, kBatch, kNothing };
    /// Sends the oldest notification or a batch. kNothing when the connection does not take it.
    Sent send();

private:
    struct UnrefTrack {
        void operator()(sd_bus_track *track) const { sd_bus_track_unref(track); }
    };

    [[nodiscard]] Checkpoint told();
    [[nodiscard]] Checkpoint toldAndWaiting();
    [[nodiscard]] bool travelTogether() const;
    bool sendBatch();
    void sendCheckpoint();
    void forgetThoseGone();
    void armTick();

    static int onListen(sd_bus_message *call, void *self, sd_bus_error *error);
    static int onTaken(sd_bus_message *call, void *self, sd_bus_error *error);
    static int onTick(sd_event_source *source, std::uint64_t time, void *self);

    static const sd_bus_vtable kVtable[];

    NotificationQueue &m_queue;
    LogStore &m_store;
    const RemovalsNow m_removals;
    const std::uint64_t m_epoch;
    std::uint64_t m_edits = 0;  ///< as they may be told
    sd_bus *m_bus = nullptr;
    std::unique_ptr<sd_bus_track, UnrefTrack> m_track;
    Listeners m_listeners;
    Checkpoint m_said;  ///< what listeners heard last
    EventSourcePointer m_tick;
};

}  // namespace quorbel
