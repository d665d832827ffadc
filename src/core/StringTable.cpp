#include "core/StringTable.h"

namespace quorbel {

StringTable::StringTable() : m_entries(1) {}

std::optional<StringTable::Id> StringTable::find(std::string_view text) const {
    const auto found = m_ids.find(text);
    return found == m_ids.end() ? std::nullopt : std::optional(found->second);
}

StringTable::Id StringTable::acquire(std::string_view text) {
    if (const auto known = find(text)) {
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
    m_ids.emplace(m_entries[id].text, id);
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
    m_ids.erase(m_entries[id].text);
    m_entries[id].text = {};
    m_free.push_back(id);
}

}  // namespace quorbel
