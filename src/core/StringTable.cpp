#include "core/StringTable.h"

#include <cstring>

namespace quorbel {

namespace {

/// Without a call for the short texts that most are.
bool isSame(std::string_view text, std::string_view other) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    if (text.size() != other.size()) {
        return false;
    }
    if (text.size() < kWord || text.size() > 2 * kWord) {
        return text == other;
    }
    const auto differ = [&](std::size_t at) {
        std::uint64_t word = 0;
        std::uint64_t otherWord = 0;
        std::memcpy(&word, text.data() + at, kWord);
        std::memcpy(&otherWord, other.data() + at, kWord);
        return word ^ otherWord;
    };
    return (differ(0) | differ(text.size() - kWord)) == 0;
}

}  // namespace

StringTable::StringTable() : m_entries(1) {}

std::optional<StringTable::Id> StringTable::find(std::size_t hash, std::string_view text) const {
    return m_ids.find(hash, [this, text](Id id) { return isSame(m_entries[id].text, text); });
}

std::optional<StringTable::Id> StringTable::find(std::string_view text) const {
    return find(hashBytes(text), text);
}

StringTable::Id StringTable::acquire(std::size_t hash, std::string_view text, std::uint64_t uses) {
    if (const auto known = find(hash, text)) {
        acquire(*known, uses);
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
    m_entries[id] = {std::string(text), uses, 0};
    m_ids.insert(hash, id);
    return id;
}

void StringTable::acquire(Id id, std::uint64_t uses) {
    if (id != kAbsent) {
        m_entries[id].uses += uses;
    }
}

std::vector<StringTable::Id> StringTable::acquireAll(const StringTable &others) {
    std::vector<Id> ids{kAbsent};
    ids.reserve(others.idLimit());
    for (Id id = 1; id < others.idLimit(); ++id) {
        ids.push_back(acquire(others.text(id), others.uses(id)));
    }
    return ids;
}

void StringTable::release(Id id) {
    if (id != kAbsent) {
        --m_entries[id].uses;
        freeUnlessNeeded(id);
    }
}

void StringTable::stopKeeping(Id id) {
    if (id != kAbsent) {
        --m_entries[id].kept;
        freeUnlessNeeded(id);
    }
}

void StringTable::freeUnlessNeeded(Id id) {
    if (m_entries[id].uses + m_entries[id].kept > 0) {
        return;
    }
    m_ids.erase(hashBytes(m_entries[id].text), id);
    m_entries[id].text = {};
    m_free.push_back(id);
}

}  // namespace quorbel
