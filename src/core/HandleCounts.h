#pragma once

#include "core/Event.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>

namespace quorbel {

/// How many handles there are of each event of a list: four bytes an event where many are held that
/// came one after the other.
class HandleCounts {
public:
    void add(EventId id);
    /// Takes one away; whether it was the event's last. Precondition: it has one.
    bool remove(EventId id);

    [[nodiscard]] bool isEmpty() const { return m_blocks.empty(); }
    [[nodiscard]] bool has(EventId id) const;
    /// False when no event from `first` up to `end` has one; what is next to them may make it true.
    [[nodiscard]] bool mayHaveAny(EventId first, EventId end) const;

private:
    static constexpr std::size_t kEvents = 256;
    struct Block {
        std::array<std::uint32_t, kEvents> handles{};
        std::size_t held = 0;  // how many events of it are
    };

    std::map<EventId, Block> m_blocks;  // by id / kEvents; each holds some event
};

}  // namespace quorbel
