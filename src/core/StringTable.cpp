#include "core/StringTable.h"

namespace quorbel {

StringTable::StringTable() : m_entries(1) {}

std::optional<StringTable::Id> StringTable::find(std::size_t hash, std::string_view text) const {
    return m_ids.find(hash, [this, text](Id id) { return m_entries[id].text == text; });
}

std::optional<StringTable::Id> StringTable::find(std::string_view text) const {
    return find(hashBytes(text), text);
}

StringTable::Id StringTable::acquire(std::string_view text) {
    const std::size_t hash = hashBytes(text);
    if (const auto known = find(hash, text)) {
        acquire(*known);
        return *known;
    }
    Id id = 0;
    if (m_free.empty()) {
        id = static_cast<Id>(m_entries.size());
        m_entries.emplace_back();
    } else {
        id = m_free.back();
        m_free.pop_back();
    }
    m_entries[id] = {std::string(text), 1};
    m_ids.insert(hash, id);
    return id;
}

void StringTable::acquire(Id id) {
    if (id != kAbsent) {
        ++m_entries[id].uses;
    }
}

void StringTable::release(Id id) {
    if (id == kAbsent || --m_entries[id].uses > 0) {
        return;
    }
    m_ids.erase(hashBytes(m_entries[id].text), id);
    m_entries[id].text = {};
    m_free.push_back(id);
}

}  // namespace quorbel
