#pragma once

#include "core/HashIndex.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Texts that many records share, each held once and for as long as a record uses or keeps it.
class StringTable {
public:
    using Id = std::uint32_t;
    /// Stands for an absent text; it can be passed everywhere and is never counted.
    static constexpr Id kAbsent = 0;

    StringTable();

    /// Nothing when no record uses or keeps that text.
    [[nodiscard]] std::optional<Id> find(std::string_view text) const;
    /// Adds uses of a text, one or more.
    Id acquire(std::string_view text, std::uint64_t uses = 1) {
        return acquire(hashBytes(text), text, uses);
    }
    /// The same for whoever has hashBytes() of the text, and may have called prefetch() with it.
    Id acquire(std::size_t hash, std::string_view text, std::uint64_t uses = 1);
    /// Begins to fetch from memory what acquire() needs: worth it when other work comes in between.
    void prefetch(std::size_t hash) const { m_ids.prefetch(hash); }
    /// Adds uses of an id that find() gave.
    void acquire(Id id, std::uint64_t uses = 1);
    /// Adds all uses of the texts of another table of which none was released, in the order of
    /// their ids. Returns the ids here by those there.
    std::vector<Id> acquireAll(const StringTable &others);
    /// Takes one use away; the last one frees the text, unless it is kept, and its id may come back
    /// for another.
    void release(Id id);
    /// Keeps a text for one more record that does not count as using it.
    void keep(Id id) {
        if (id != kAbsent) {
            ++m_entries[id].kept;
        }
    }
    /// One record less keeps it.
    void stopKeeping(Id id);

    /// Valid until the table changes; empty for kAbsent.
    [[nodiscard]] std::string_view text(Id id) const { return m_entries[id].text; }
    [[nodiscard]] std::uint64_t uses(Id id) const { return m_entries[id].uses; }
    /// One more than the largest id handed out.
    [[nodiscard]] std::size_t idLimit() const { return m_entries.size(); }

private:
    [[nodiscard]] std::optional<Id> find(std::size_t hash, std::string_view text) const;

    struct Entry {
        std::string text;
        std::uint64_t uses = 0;
        std::uint64_t kept = 0;
    };
    void freeUnlessNeeded(Id id);

    std::vector<Entry> m_entries;
    HashIndex m_ids;
    std::vector<Id> m_free;
};

}  // namespace quorbel
