#pragma once

#include "platform/Value.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {

/// Fills a dictionary whose largest size is known; of equal keys the first one stays. However many
/// there are, adding one takes the same time.
class DictionaryBuilder {
public:
    /// What an entry takes beside the bytes of its key and its value.
    static constexpr std::size_t kEntryCost = sizeof(Dictionary::Entry) + 4 * sizeof(std::uint32_t);

    /// `count` is below 2^32.
    explicit DictionaryBuilder(std::size_t count);

    void add(std::string key, Value value);
    Dictionary take() { return std::move(m_dictionary); }

private:
    Dictionary m_dictionary;
    std::vector<std::uint32_t>
        m_slots;  ///< by the keys' hashes: numbers of entries from 1; 0: none
};

}  // namespace quorbel
