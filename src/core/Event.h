#pragma once

#include "common/EventFields.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// Names an event for as long as the program runs; later events have larger ones.
using EventId = std::uint64_t;

class EventList;

/// Names an event with the list that has it.
struct EventPlace {
    EventList &list;
    EventId id;
};

/// One event, shared by reference: the list, the alert queue, a details sheet and a popup that hold
/// the same event see the same fields. It stays readable after it left the list, as it was then.
///
/// In its interface it is a map from text to text, in which any key can be absent; the list
/// rewrites "Date" and adds "Image". Main thread only; must not outlive its list.
class Event {
public:
    Event(EventList &list, EventId id);
    explicit Event(const EventPlace &place) : Event(place.list, place.id) {}
    ~Event();
    Event(const Event &other);
    Event(Event &&other) noexcept;
    Event &operator=(Event other) noexcept;

    [[nodiscard]] EventId id() const { return m_id; }
    /// The value of a key ("Date", "Priority", "Host", "Message", "Image", or one that came with
    /// the event); nothing when it is absent.
    [[nodiscard]] std::optional<std::string> value(std::string_view key) const;
    /// The moment that its date came as; nothing when it came as text, or the event left the list.
    [[nodiscard]] std::optional<std::int64_t> moment() const;

private:
    EventList *m_list;
    EventId m_id;
};

}  // namespace quorbel
