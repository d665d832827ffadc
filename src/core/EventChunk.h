#pragma once

#include "core/Event.h"
#include "core/HashIndex.h"
#include "core/StringTable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// What the list holds of one event, beside its message's bytes.
struct EventRecord {
    /// `format` of a date still in the digits that it came in.
    static constexpr std::uint8_t kRawDate = 0;
    /// `format` of a date that is kept as text, in the list's side table.
    static constexpr std::uint8_t kTextDate = 255;
    static constexpr std::uint32_t kNoMessage = UINT32_MAX;

    std::int64_t seconds = 0;  ///< since 1970; the moment that a raw or rendered date shows
    std::uint32_t message = kNoMessage;  ///< where its bytes are in the chunk
    StringTable::Id priority = StringTable::kAbsent;
    StringTable::Id host = StringTable::kAbsent;
    std::uint16_t showings = 0;      ///< how many showings of the list its date and image reflect
    std::uint8_t format = kRawDate;  ///< else the format in which its date was rendered
    std::uint8_t image : 2 = 0;      ///< 0 none, else 1 + SeverityLevel
    std::uint8_t isLeaving : 1 = 0;  ///< whether it is marked for removal
    std::uint8_t hasExtras : 1 = 0;  ///< whether the list's side table holds more of it
};
static_assert(sizeof(EventRecord) == 24);

/// A run of consecutive events, packed: one allocation for the records and one for the messages.
/// Records are reached by slot (what their id fixes) or by position (among those still present).
class EventChunk {
public:
    static constexpr std::size_t kSlots = 4096;

    /// `expectedBytes` is how much room its messages will probably take.
    EventChunk(EventId first, std::size_t expectedBytes);

    [[nodiscard]] EventId first() const { return m_first; }
    /// One more than the largest id that an event of it has or had.
    [[nodiscard]] EventId endOfIds() const { return m_first + m_used; }
    [[nodiscard]] EventId idAt(std::size_t position) const;
    /// Calls `visit(id)` for the events from `position` on, one after the other, `count` of them.
    template <typename Visit>
    void visitIds(std::size_t position, std::size_t count, Visit visit) const;
    [[nodiscard]] bool holds(EventId id) const {
        const std::size_t slot = id - m_first;
        return slot < m_used && (m_present[slot / 64] >> (slot % 64) & 1U) != 0;
    }
    /// How many of its events have smaller ids.
    [[nodiscard]] std::size_t countBefore(EventId id) const;
    [[nodiscard]] std::optional<std::size_t> positionOf(EventId id) const;
    [[nodiscard]] std::size_t size() const { return m_records.size(); }
    [[nodiscard]] std::size_t messageBytes() const { return m_bytes.size(); }
    /// Whether no further event can be added.
    [[nodiscard]] bool isFull() const { return m_used == kSlots || m_bytes.size() >= kBytesLimit; }

    EventRecord &record(std::size_t position) { return m_records[position]; }
    [[nodiscard]] const EventRecord &record(std::size_t position) const {
        return m_records[position];
    }
    /// Valid until the chunk changes.
    [[nodiscard]] std::optional<std::string_view> message(const EventRecord &record) const;
    /// The bytes of all messages, in the order of the records, with others between them.
    [[nodiscard]] std::string_view bytes() const { return {m_bytes.data(), m_bytes.size()}; }

    /// Adds the next event. Precondition: not full.
    EventRecord &append(const std::optional<std::string_view> &message);
    /// Returns unused memory; called when no further event will come.
    void close();
    /// A run of positions, [first, last).
    struct Positions {
        std::size_t first = 0;
        std::size_t last = 0;
    };
    /// Takes out the records at ascending runs of positions, in one pass.
    void remove(const std::vector<Positions> &ranges);

    /// Counts a moment among those of its events, whose first and last it keeps.
    void addMoment(std::int64_t seconds) {
        m_earliest = std::min(m_earliest, seconds);
        m_latest = std::max(m_latest, seconds);
    }
    [[nodiscard]] std::int64_t earliest() const { return m_earliest; }
    [[nodiscard]] std::int64_t latest() const { return m_latest; }

    // The look-up table of removal notices: built and kept up by the list.
    void dropIndex();
    [[nodiscard]] bool hasIndex() const { return m_hasIndex; }
    void startIndex();
    void addToIndex(std::size_t hash, std::size_t position);
    /// Calls `visit(position)` for every present record that was added under this hash, and perhaps
    /// for others.
    template <typename Visit>
    void lookUp(std::size_t hash, Visit visit) const {
        static_cast<void>(m_index.find(hash, [this, &visit](std::uint32_t slot) {
            if (const auto position = positionOf(m_first + slot)) {
                visit(*position);
            }
            return false;
        }));
    }

private:
    static constexpr std::size_t kBytesLimit = std::size_t{256} << 20U;

    void dropUnusedBytes();

    EventId m_first;
    std::size_t m_used = 0;  // slots handed out
    std::array<std::uint64_t, kSlots / 64> m_present{};
    std::vector<EventRecord> m_records;
    std::vector<char> m_bytes;  // each message after its length, seven bits a byte
    std::size_t m_deadBytes = 0;
    std::int64_t m_earliest = INT64_MAX;
    std::int64_t m_latest = INT64_MIN;
    bool m_hasIndex = false;
    HashIndex m_index;  // slots by the hash of their fields
};

template <typename Visit>
void EventChunk::visitIds(std::size_t position, std::size_t count, Visit visit) const {
    if (count == 0) {
        return;
    }
    const EventId from = idAt(position);
    std::size_t word = (from - m_first) / 64;
    std::uint64_t bits = m_present[word] & (~std::uint64_t{0} << ((from - m_first) % 64));
    for (; count > 0; --count, bits &= bits - 1) {
        while (bits == 0) {
            bits = m_present[++word];
        }
        visit(m_first + word * 64 + static_cast<std::size_t>(std::countr_zero(bits)));
    }
}

}  // namespace quorbel
