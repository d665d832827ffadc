#include "platform/DictionaryBuilder.h"

#include <bit>
#include <functional>
#include <string_view>
#include <utility>

namespace quorbel {

DictionaryBuilder::DictionaryBuilder(std::size_t count)
    // Half of the slots or more stay free, so that a search ends soon.
    : m_slots(std::bit_ceil(2 * count)) {
    m_dictionary.reserve(count);
}

void DictionaryBuilder::add(std::string key, Value value) {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t at = std::hash<std::string_view>()(key) & mask;
    for (; m_slots[at] != 0; at = (at + 1) & mask) {
        if ((m_dictionary.begin() + (m_slots[at] - 1))->first == key) {
            return;
        }
    }
    m_dictionary.append(std::move(key), std::move(value));
    m_slots[at] = static_cast<std::uint32_t>(m_dictionary.size());
}

}  // namespace quorbel
