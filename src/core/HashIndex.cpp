#include "core/HashIndex.h"

#include <bit>
#include <cstring>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint64_t kFirstPrime = 0x9E3779B185EBCA87U;
constexpr std::uint64_t kSecondPrime = 0xC2B2AE3D27D4EB4FU;

std::uint64_t mixed(std::uint64_t hash, std::uint64_t word) {
    return std::rotl(hash + word * kSecondPrime, 31) * kFirstPrime;
}

std::uint64_t finished(std::uint64_t hash) {
    hash = (hash ^ (hash >> 33U)) * kSecondPrime;
    return hash ^ (hash >> 29U);
}

}  // namespace

std::size_t hashBytes(std::string_view bytes) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    std::uint64_t hash = bytes.size();
    std::uint64_t word = 0;
    if (bytes.size() < kWord) {
        for (const char byte : bytes) {
            word = word << 8U | static_cast<unsigned char>(byte);
        }
        return finished(mixed(hash, word));
    }
    // The last word overlaps the one before it, which spares a rest of odd length.
    const char *const last = bytes.data() + bytes.size() - kWord;
    for (const char *at = bytes.data(); at < last; at += kWord) {
        std::memcpy(&word, at, kWord);
        hash = mixed(hash, word);
    }
    std::memcpy(&word, last, kWord);
    return finished(mixed(hash, word));
}

void HashIndex::reserve(std::size_t count) {
    constexpr std::size_t kSmallest = 16;
    const std::size_t size = std::bit_ceil(std::max(2 * count, kSmallest));
    if (size <= m_slots.size()) {
        return;
    }
    const std::vector<Slot> before = std::exchange(m_slots, std::vector<Slot>(size));
    for (const Slot &slot : before) {
        if (slot.isUsed()) {
            place(slot);
        }
    }
}

void HashIndex::clear() {
    m_slots = {};
    m_count = 0;
}

void HashIndex::place(const Slot &slot) {
    std::size_t i = slot.key & mask();
    while (m_slots[i].isUsed()) {
        i = (i + 1) & mask();
    }
    m_slots[i] = slot;
}

void HashIndex::insert(std::size_t hash, std::uint32_t number) {
    reserve(m_count + 1);
    ++m_count;
    place({fold(hash), number + 1});
}

void HashIndex::erase(std::size_t hash, std::uint32_t number) {
    std::size_t hole = fold(hash) & mask();
    while (m_slots[hole].number() != number) {
        hole = (hole + 1) & mask();
    }
    // What stands behind the hole moves into it where its own place lies before.
    for (std::size_t i = (hole + 1) & mask(); m_slots[i].isUsed(); i = (i + 1) & mask()) {
        const std::size_t home = m_slots[i].key & mask();
        if (((i - home) & mask()) >= ((i - hole) & mask())) {
            m_slots[hole] = m_slots[i];
            hole = i;
        }
    }
    m_slots[hole] = {};
    --m_count;
}

}  // namespace quorbel
