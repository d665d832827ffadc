#pragma once

#include "core/HashIndex.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Texts packed one behind the other in a few large blocks; they go all together.
class TextStore {
public:
    using Ref = std::uint64_t;

    Ref add(std::string_view text);
    /// Valid as long as the store.
    [[nodiscard]] std::string_view text(Ref ref) const;

private:
    char *roomFor(std::size_t bytes);

    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_used = 0;  // of the last block
    std::size_t m_size = 0;  // of the last block
};

/// Distinct texts, each held once and numbered in the order in which they were first seen, from 0.
class TextTable {
public:
    /// `store` takes the texts, perhaps beside others, and outlives the table.
    explicit TextTable(TextStore &store) : m_store(store) {}

    /// The number of a text, which is new if it was not seen before.
    std::uint32_t number(std::string_view text) { return number(hashBytes(text), text); }

    /// The same for texts that are nearly all distinct, where each look into a large index waits
    /// for memory: the text is queued, and its place in the index fetched meanwhile. `take(number)`
    /// is called for queued texts in their order, now or with a later one.
    template <typename Take>
    void numberLater(std::string_view text, Take take) {
        if (m_queue.size() == kMostQueued) {
            numberQueued(take);
        }
        const std::size_t hash = hashBytes(text);
        m_index.prefetch(hash);
        m_queue.push_back({hash, m_queuedBytes.size(), text.size()});
        m_queuedBytes += text;
    }
    /// Calls `take(number)` for those still queued.
    template <typename Take>
    void numberQueued(Take take) {
        for (const Queued &queued : m_queue) {
            take(number(queued.hash,
                        std::string_view(m_queuedBytes).substr(queued.begin, queued.length)));
        }
        m_queue.clear();
        m_queuedBytes.clear();
    }

    [[nodiscard]] std::size_t size() const { return m_refs.size(); }
    [[nodiscard]] TextStore::Ref ref(std::uint32_t number) const { return m_refs[number]; }
    [[nodiscard]] std::string_view text(std::uint32_t number) const {
        return m_store.text(m_refs[number]);
    }
    /// Returns the memory that only numbering needs; no further text may come.
    void close();

private:
    static constexpr std::size_t kMostQueued = 32;

    struct Queued {
        std::size_t hash;
        std::size_t begin;  // in m_queuedBytes
        std::size_t length;
    };

    std::uint32_t number(std::size_t hash, std::string_view text);

    TextStore &m_store;
    std::vector<TextStore::Ref> m_refs;
    HashIndex m_index;
    std::vector<Queued> m_queue;
    std::string m_queuedBytes;
};

}  // namespace quorbel
