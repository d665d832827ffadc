#pragma once

#include "core/Event.h"
#include "core/HashIndex.h"
#include "core/PackedMessages.h"
#include "core/StringTable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
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

/// A chunk's messages, each after its length, seven bits a byte: as they are, or packed.
struct ChunkMessages {
    std::shared_ptr<MessageBytes> plain = std::make_shared<MessageBytes>();  ///< null once packed
    std::unique_ptr<PackedMessages> packed;

    [[nodiscard]] std::size_t size() const { return packed ? packed->size() : plain->size(); }
    // Valid as EventChunk::bytes() is.
    [[nodiscard]] const char *bytes() const { return (packed ? packed->bytes() : *plain).data(); }
    [[nodiscard]] std::optional<std::string_view> at(const EventRecord &record) const;
};

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
    /// The same up to a position behind the last event, where it is endOfIds().
    [[nodiscard]] EventId idFrom(std::size_t position) const {
        return position < size() ? idAt(position) : endOfIds();
    }
    /// Calls `visit(position, id)` for the events at ascending positions.
    template <typename Visit>
    void visitIds(const std::vector<std::uint32_t> &positions, Visit visit) const;
    [[nodiscard]] bool holds(EventId id) const {
        const std::size_t slot = id - m_first;
        return slot < m_used && (m_present[slot / 64] >> (slot % 64) & 1U) != 0;
    }
    /// How many of its events have smaller ids.
    [[nodiscard]] std::size_t countBefore(EventId id) const;
    [[nodiscard]] std::optional<std::size_t> positionOf(EventId id) const;
    [[nodiscard]] std::size_t size() const { return m_records.size(); }
    [[nodiscard]] std::size_t messageBytes() const { return m_messages->size(); }
    /// Whether no further event can be added.
    [[nodiscard]] bool isFull() const { return m_used == kSlots || messageBytes() >= kBytesLimit; }

    EventRecord &record(std::size_t position) { return m_records[position]; }
    [[nodiscard]] const EventRecord &record(std::size_t position) const {
        return m_records[position];
    }
    /// Valid until the chunk changes, or until messages of UnpackedMessages::kMost other chunks
    /// were looked at.
    [[nodiscard]] std::optional<std::string_view> message(const EventRecord &record) const;
    /// The bytes in which its messages stand where their records say. As long valid.
    [[nodiscard]] const char *bytes() const { return m_messages->bytes(); }
    /// The messages themselves: who shares them has them for good, where the records say now, also
    /// when they are packed later or the chunk gets others.
    [[nodiscard]] const std::shared_ptr<ChunkMessages> &messages() const { return m_messages; }
    /// How many bytes the messages take of the records from one position to another, that one
    /// included, with others between them.
    [[nodiscard]] std::size_t bytesBetween(std::size_t first, std::size_t last) const {
        return placeFrom(last + 1) - placeFrom(first);
    }

    /// Adds the next event. Precondition: not full.
    EventRecord &append(const std::optional<std::string_view> &message);
    /// Returns unused memory; called when no further event will come.
    void close();
    /// How much room the messages of a chunk of such events will probably take.
    [[nodiscard]] std::size_t expectedBytes() const {
        return std::min(messageBytes() + messageBytes() / 16, kMaxBytesReserved);
    }
    /// Takes at once the memory that what it expects will need, which is quicker where it all
    /// comes.
    void takeMemory();
    /// Closes it and makes the one that takes the next events, expected to need as much room.
    [[nodiscard]] EventChunk closeAndFollow(EventId first);
    /// Gives its events other ids. Precondition: none was removed, and it has no look-up table.
    void setFirst(EventId first) { m_first = first; }

    [[nodiscard]] bool isPacked() const { return m_messages->packed != nullptr; }
    /// Its messages, as any thread may unpack them; null when they are not packed.
    [[nodiscard]] std::shared_ptr<const PackedBytes> packed() const {
        return isPacked() ? m_messages->packed->packed() : nullptr;
    }
    /// What cannot be in its messages, as far as that is known without unpacking them.
    [[nodiscard]] const TrigramFilter &filter() const;
    /// Whether the messages' bytes will not change any more, are as they are, and may gain from
    /// packing.
    [[nodiscard]] bool isToBePacked() const {
        return m_isClosed && !isPacked() && !m_isIncompressible;
    }
    /// They are replaced, never changed, once the list has a later chunk. Precondition:
    /// isToBePacked().
    [[nodiscard]] std::shared_ptr<const MessageBytes> bytesToPack() const {
        return m_messages->plain;
    }
    /// Puts packed messages in the place of the bytes that they were made of, unless these have
    /// been replaced since; nothing where packing them gained nothing. `unpacked` outlives the
    /// chunk.
    void pack(const std::shared_ptr<const MessageBytes> &from, std::optional<PackedBytes> packed,
              UnpackedMessages &unpacked);

    /// A run of positions, [first, last).
    struct Positions {
        std::size_t first = 0;
        std::size_t last = 0;
    };
    /// Takes out the records at ascending runs of positions, in one pass; `taken`, made by
    /// emptyCopy(), gets them in the slots that they had.
    void remove(const std::vector<Positions> &ranges, EventChunk *taken = nullptr);
    /// A chunk of the same slots, none of which holds a record.
    [[nodiscard]] EventChunk emptyCopy() const;
    /// Puts records back that remove() took.
    void putBack(const EventChunk &taken);
    /// Appends the ids of its records.
    void listIds(std::vector<EventId> &ids) const;

    /// Counts a moment among those that its events' dates show or showed: the first and the last
    /// are kept.
    void addMoment(std::int64_t seconds) {
        m_earliest = std::min(m_earliest, seconds);
        m_latest = std::max(m_latest, seconds);
    }
    [[nodiscard]] std::int64_t earliest() const { return m_earliest; }
    [[nodiscard]] std::int64_t latest() const { return m_latest; }

    /// Notes that all records reflect so many showings of the list; nothing when that is not known.
    void noteShowings(std::optional<std::uint16_t> showings) { m_showings = showings; }
    [[nodiscard]] bool haveAll(std::uint16_t showings) const {
        return std::ranges::all_of(
            m_records, [=](const EventRecord &record) { return record.showings == showings; });
    }
    /// What was noted last. It holds for events that were added since, unless the list was shown.
    [[nodiscard]] std::optional<std::uint16_t> showings() const { return m_showings; }

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
    static constexpr std::size_t kMaxBytesReserved = std::size_t{1} << 20U;
    static constexpr std::size_t kBytesLimit = std::size_t{256} << 20U;

    void replaceBytes(MessageBytes bytes);
    void dropUnusedBytes();
    /// Where the message begins that a record or the next one after it has.
    [[nodiscard]] std::size_t placeFrom(std::size_t position) const;
    /// Whether no event of it has been removed.
    [[nodiscard]] bool isWhole() const { return m_records.size() == m_used; }
    /// The number of the bit that is set and has `before` such below it.
    static std::size_t bitAt(std::uint64_t bits, std::size_t before) {
        for (; before > 0; --before) {
            bits &= bits - 1;
        }
        return static_cast<std::size_t>(std::countr_zero(bits));
    }
    void adopt(std::size_t slot, const EventRecord &record,
               const std::optional<std::string_view> &text);

    EventId m_first;
    std::size_t m_used = 0;  // slots handed out
    std::array<std::uint64_t, kSlots / 64> m_present{};
    std::vector<EventRecord> m_records;
    std::shared_ptr<ChunkMessages> m_messages = std::make_shared<ChunkMessages>();
    bool m_isClosed = false;
    bool m_isIncompressible = false;
    std::size_t m_deadBytes = 0;
    std::int64_t m_earliest = INT64_MAX;
    std::int64_t m_latest = INT64_MIN;
    std::optional<std::uint16_t> m_showings;
    bool m_hasIndex = false;
    HashIndex m_index;  // slots by the hash of their fields
};

template <typename Visit>
void EventChunk::visitIds(const std::vector<std::uint32_t> &positions, Visit visit) const {
    if (isWhole()) {
        for (const std::uint32_t position : positions) {
            visit(position, m_first + position);
        }
        return;
    }
    std::size_t word = 0;
    std::size_t before = 0;  // events in the words before
    for (const std::uint32_t position : positions) {
        auto count = static_cast<std::size_t>(std::popcount(m_present[word]));
        while (before + count <= position) {
            before += count;
            count = static_cast<std::size_t>(std::popcount(m_present[++word]));
        }
        visit(position, m_first + word * 64 + bitAt(m_present[word], position - before));
    }
}

}  // namespace quorbel
