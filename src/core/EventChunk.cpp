#include "core/EventChunk.h"

#include "core/MessageRun.h"
#include "platform/MemoryPages.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace quorbel {

namespace {

static_assert(MessageRun::kNowhere == EventRecord::kNoMessage);

constexpr std::size_t kWordBits = 64;

void writeMessage(MessageBytes &bytes, std::string_view text) {
    std::size_t length = text.size();
    while (length >= 0x80U) {
        bytes.push_back(static_cast<char>(0x80U | (length & 0x7FU)));
        length >>= 7U;
    }
    bytes.push_back(static_cast<char>(length));
    bytes.insert(bytes.end(), text.begin(), text.end());
}

}  // namespace

EventChunk::EventChunk(EventId first, std::size_t expectedBytes) : m_first(first) {
    m_records.reserve(kSlots);
    m_messages->plain->reserve(expectedBytes);
}

EventId EventChunk::idAt(std::size_t position) const {
    if (isWhole()) {
        return m_first + position;
    }
    std::size_t word = 0;
    std::size_t before = 0;
    for (;; ++word) {
        const auto count = static_cast<std::size_t>(std::popcount(m_present[word]));
        if (before + count > position) {
            break;
        }
        before += count;
    }
    return m_first + word * kWordBits + bitAt(m_present[word], position - before);
}

std::optional<std::size_t> EventChunk::positionOf(EventId id) const {
    const std::size_t slot = id - m_first;
    const std::size_t word = slot / kWordBits;
    const std::uint64_t bit = std::uint64_t{1} << (slot % kWordBits);
    if (slot >= m_used || (m_present[word] & bit) == 0) {
        return std::nullopt;
    }
    return countBefore(id);
}

std::size_t EventChunk::countBefore(EventId id) const {
    const std::size_t slot = id <= m_first ? 0 : std::min(id - m_first, m_used);
    if (isWhole()) {
        return slot;
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < slot / kWordBits; ++i) {
        count += static_cast<std::size_t>(std::popcount(m_present[i]));
    }
    if (const std::size_t rest = slot % kWordBits; rest > 0) {
        const std::uint64_t below = (std::uint64_t{1} << rest) - 1;
        count += static_cast<std::size_t>(std::popcount(m_present[slot / kWordBits] & below));
    }
    return count;
}

std::optional<std::string_view> ChunkMessages::at(const EventRecord &record) const {
    if (record.message == EventRecord::kNoMessage) {
        return std::nullopt;
    }
    return StoredMessage::at(bytes() + record.message).text;
}

std::optional<std::string_view> EventChunk::message(const EventRecord &record) const {
    return m_messages->at(record);
}

std::size_t EventChunk::placeFrom(std::size_t position) const {
    while (position < size() && m_records[position].message == EventRecord::kNoMessage) {
        ++position;
    }
    return position < size() ? m_records[position].message : messageBytes();
}

EventRecord &EventChunk::append(const std::optional<std::string_view> &message) {
    m_isClosed = false;
    EventRecord &record = m_records.emplace_back();
    if (message) {
        record.message = static_cast<std::uint32_t>(m_messages->plain->size());
        writeMessage(*m_messages->plain, *message);
    }
    m_present[m_used / kWordBits] |= std::uint64_t{1} << (m_used % kWordBits);
    ++m_used;
    return record;
}

void EventChunk::close() {
    if (std::exchange(m_isClosed, true)) {
        return;
    }
    // A little room that was never written to takes no memory; moving everything would.
    if (m_messages->plain->capacity() - m_messages->plain->size() > m_messages->plain->size() / 8) {
        m_messages->plain->shrink_to_fit();
    }
    m_records.shrink_to_fit();
}

void EventChunk::takeMemory() {
    makePages(m_messages->plain->data(),
              m_messages->plain->capacity() - m_messages->plain->capacity() / 16);
}

EventChunk EventChunk::closeAndFollow(EventId first) {
    close();
    return {first, expectedBytes()};
}

void EventChunk::remove(const std::vector<Positions> &ranges, EventChunk *taken) {
    auto range = ranges.begin();
    std::size_t position = 0;
    std::size_t kept = 0;
    std::size_t wordBegin = 0;
    for (std::uint64_t &word : m_present) {
        for (std::uint64_t rest = word; rest != 0; rest &= rest - 1, ++position) {
            if (range != ranges.end() && position == range->last) {
                ++range;
            }
            if (range == ranges.end() || position < range->first) {
                m_records[kept++] = m_records[position];
                continue;
            }
            word &= ~(rest & -rest);
            const EventRecord &record = m_records[position];
            if (taken != nullptr) {
                taken->adopt(wordBegin + static_cast<std::size_t>(std::countr_zero(rest)), record,
                             message(record));
            }
            if (record.message != EventRecord::kNoMessage && !isPacked()) {
                m_deadBytes += StoredMessage::at(bytes() + record.message).storedSize;
            }
        }
        wordBegin += kWordBits;
    }
    m_records.resize(kept);
    if (isPacked()) {
        // About so many: to know is not worth unpacking them.
        m_deadBytes = messageBytes() * (m_used - kept) / m_used;
    }
    if (m_deadBytes > messageBytes() / 2) {
        dropUnusedBytes();
    }
}

EventChunk EventChunk::emptyCopy() const {
    EventChunk copy(m_first, 0);
    copy.m_used = m_used;
    copy.m_earliest = m_earliest;
    copy.m_latest = m_latest;
    return copy;
}

/// Precondition: behind all records that it has.
void EventChunk::adopt(std::size_t slot, const EventRecord &record,
                       const std::optional<std::string_view> &text) {
    EventRecord &own = m_records.emplace_back(record);
    if (text) {
        own.message = static_cast<std::uint32_t>(m_messages->plain->size());
        writeMessage(*m_messages->plain, *text);
    }
    m_present[slot / kWordBits] |= std::uint64_t{1} << (slot % kWordBits);
}

void EventChunk::putBack(const EventChunk &taken) {
    std::vector<EventRecord> records;
    MessageBytes bytes;  // in the order of the records, as everywhere
    records.reserve(m_records.size() + taken.m_records.size());
    bytes.reserve(messageBytes() - m_deadBytes + taken.messageBytes() - taken.m_deadBytes);
    const auto add = [&](const EventChunk &from, const EventRecord &record) {
        EventRecord &added = records.emplace_back(record);
        if (const auto text = from.message(record)) {
            added.message = static_cast<std::uint32_t>(bytes.size());
            writeMessage(bytes, *text);
        }
    };
    auto own = m_records.begin();
    auto back = taken.m_records.begin();
    for (std::size_t i = 0; i < m_present.size(); ++i) {
        for (std::uint64_t rest = m_present[i] | taken.m_present[i]; rest != 0; rest &= rest - 1) {
            if ((m_present[i] & rest & -rest) != 0) {
                add(*this, *own++);
            } else {
                add(taken, *back++);
            }
        }
        m_present[i] |= taken.m_present[i];
    }
    m_records = std::move(records);
    replaceBytes(std::move(bytes));
    m_earliest = std::min(m_earliest, taken.m_earliest);
    m_latest = std::max(m_latest, taken.m_latest);
    m_showings.reset();
    dropIndex();
}

void EventChunk::listIds(std::vector<EventId> &ids) const {
    EventId wordBegin = m_first;
    for (const std::uint64_t word : m_present) {
        for (std::uint64_t rest = word; rest != 0; rest &= rest - 1) {
            ids.push_back(wordBegin + static_cast<std::size_t>(std::countr_zero(rest)));
        }
        wordBegin += kWordBits;
    }
}

void EventChunk::dropUnusedBytes() {
    MessageBytes kept;
    kept.reserve(messageBytes() - m_deadBytes);
    for (EventRecord &record : m_records) {
        if (const auto text = message(record)) {
            record.message = static_cast<std::uint32_t>(kept.size());
            writeMessage(kept, *text);
        }
    }
    replaceBytes(std::move(kept));
    if (m_used == kSlots) {
        m_records.shrink_to_fit();
    }
}

const TrigramFilter &EventChunk::filter() const {
    static const TrigramFilter kAnything;
    return isPacked() ? m_messages->packed->filter() : kAnything;
}

void EventChunk::pack(const std::shared_ptr<const MessageBytes> &from,
                      std::optional<PackedBytes> packed, UnpackedMessages &unpacked) {
    if (m_messages->plain != from) {
        return;
    }
    if (!packed) {
        m_isIncompressible = true;
        return;
    }
    m_messages->packed = std::make_unique<PackedMessages>(std::move(*packed), unpacked);
    m_messages->plain.reset();
}

void EventChunk::replaceBytes(MessageBytes bytes) {
    m_messages = std::make_shared<ChunkMessages>();
    *m_messages->plain = std::move(bytes);
    m_isIncompressible = false;
    m_deadBytes = 0;
}

void EventChunk::dropIndex() {
    m_hasIndex = false;
    m_index.clear();
}

void EventChunk::startIndex() {
    dropIndex();
    m_hasIndex = true;
    m_index.reserve(size());
}

void EventChunk::addToIndex(std::size_t hash, std::size_t position) {
    m_index.insert(hash, static_cast<std::uint32_t>(idAt(position) - m_first));
}

}  // namespace quorbel
