#include "core/EventChunk.h"

#include <algorithm>
#include <bit>

namespace quorbel {

namespace {

constexpr std::size_t kWordBits = 64;

struct StoredMessage {
    std::string_view text;
    std::size_t storedSize;  // with its length
};

StoredMessage readMessage(const char *bytes) {
    std::size_t length = 0;
    std::size_t used = 0;
    unsigned char byte = 0;
    do {
        byte = static_cast<unsigned char>(bytes[used]);
        length |= static_cast<std::size_t>(byte & 0x7FU) << (7 * used);
        ++used;
    } while ((byte & 0x80U) != 0);
    return {{bytes + used, length}, used + length};
}

void writeMessage(std::vector<char> &bytes, std::string_view text) {
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
    m_bytes.reserve(expectedBytes);
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

std::optional<std::string_view> EventChunk::message(const EventRecord &record) const {
    if (record.message == EventRecord::kNoMessage) {
        return std::nullopt;
    }
    return readMessage(m_bytes.data() + record.message).text;
}

std::size_t EventChunk::placeFrom(std::size_t position) const {
    while (position < size() && m_records[position].message == EventRecord::kNoMessage) {
        ++position;
    }
    return position < size() ? m_records[position].message : m_bytes.size();
}

std::string_view EventChunk::messagesBetween(std::size_t first, std::size_t last) const {
    const std::size_t begin = placeFrom(first);
    return {m_bytes.data() + begin, placeFrom(last + 1) - begin};
}

EventRecord &EventChunk::append(const std::optional<std::string_view> &message) {
    EventRecord &record = m_records.emplace_back();
    if (message) {
        record.message = static_cast<std::uint32_t>(m_bytes.size());
        writeMessage(m_bytes, *message);
    }
    m_present[m_used / kWordBits] |= std::uint64_t{1} << (m_used % kWordBits);
    ++m_used;
    return record;
}

void EventChunk::close() {
    // A little room that was never written to takes no memory; moving everything would.
    if (m_bytes.capacity() - m_bytes.size() > m_bytes.size() / 8) {
        m_bytes.shrink_to_fit();
    }
    m_records.shrink_to_fit();
}

void EventChunk::remove(const std::vector<Positions> &ranges) {
    auto range = ranges.begin();
    std::size_t position = 0;
    std::size_t kept = 0;
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
            const std::uint32_t message = m_records[position].message;
            if (message != EventRecord::kNoMessage) {
                m_deadBytes += readMessage(m_bytes.data() + message).storedSize;
            }
        }
    }
    m_records.resize(kept);
    if (m_deadBytes > m_bytes.size() / 2) {
        dropUnusedBytes();
    }
}

void EventChunk::dropUnusedBytes() {
    std::vector<char> kept;
    kept.reserve(m_bytes.size() - m_deadBytes);
    for (EventRecord &record : m_records) {
        if (const auto text = message(record)) {
            record.message = static_cast<std::uint32_t>(kept.size());
            writeMessage(kept, *text);
        }
    }
    m_bytes = std::move(kept);
    m_deadBytes = 0;
    if (m_used == kSlots) {
        m_records.shrink_to_fit();
    }
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
