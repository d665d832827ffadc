#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// A hash of bytes, quick for the short texts of events.
std::size_t hashBytes(std::string_view bytes);

/// Finds small numbers by hash: which text, record or slot a number stands for is the owner's
/// business, and so is telling apart those that share a hash.
class HashIndex {
public:
    [[nodiscard]] bool isEmpty() const { return m_count == 0; }
    /// Makes room for `count` numbers in all.
    void reserve(std::size_t count);
    void clear();

    void insert(std::size_t hash, std::uint32_t number);
    /// Precondition: it was inserted under this hash.
    void erase(std::size_t hash, std::uint32_t number);

    /// Begins to fetch from memory what find() and insert() need for this hash. Worth its while
    /// when other work comes in between and the index is large.
    void prefetch(std::size_t hash) const {
        if (!m_slots.empty()) {
            __builtin_prefetch(&m_slots[fold(hash) & mask()]);
        }
    }

    /// The first number under this hash for which `matches(number)` holds.
    template <typename Matches>
    [[nodiscard]] std::optional<std::uint32_t> find(std::size_t hash, Matches matches) const {
        if (m_slots.empty()) {
            return std::nullopt;
        }
        const std::uint32_t key = fold(hash);
        for (std::size_t i = key & mask(); m_slots[i].isUsed(); i = (i + 1) & mask()) {
            if (m_slots[i].key == key && matches(m_slots[i].number())) {
                return m_slots[i].number();
            }
        }
        return std::nullopt;
    }

private:
    struct Slot {
        std::uint32_t key = 0;
        std::uint32_t numberPlusOne = 0;
        [[nodiscard]] bool isUsed() const { return numberPlusOne != 0; }
        [[nodiscard]] std::uint32_t number() const { return numberPlusOne - 1; }
    };

    static std::uint32_t fold(std::size_t hash) {
        return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
    }
    [[nodiscard]] std::size_t mask() const { return m_slots.size() - 1; }
    void place(const Slot &slot);

    std::vector<Slot> m_slots;  // a power of two, at most half of them used
    std::size_t m_count = 0;
};

}  // namespace quorbel
