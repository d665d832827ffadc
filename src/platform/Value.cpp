#include "platform/Value.h"

#include <algorithm>

namespace quorbel {

Dictionary::Dictionary() = default;
Dictionary::Dictionary(std::initializer_list<Entry> entries) : m_entries(entries) {}
Dictionary::Dictionary(const Dictionary &) = default;
Dictionary::Dictionary(Dictionary &&) noexcept = default;
Dictionary &Dictionary::operator=(const Dictionary &) = default;
Dictionary &Dictionary::operator=(Dictionary &&) noexcept = default;
Dictionary::~Dictionary() = default;

const Value *Dictionary::find(std::string_view key) const {
    const auto found = std::ranges::find(m_entries, key, &Entry::first);
    return found == m_entries.end() ? nullptr : &found->second;
}

void Dictionary::set(std::string_view key, Value value) {
    const auto found = std::ranges::find(m_entries, key, &Entry::first);
    if (found == m_entries.end()) {
        m_entries.emplace_back(std::string(key), std::move(value));
    } else {
        found->second = std::move(value);
    }
}

void Dictionary::append(std::string key, Value value) {
    m_entries.emplace_back(std::move(key), std::move(value));
}

bool Dictionary::remove(std::string_view key) {
    return std::erase_if(m_entries, [key](const Entry &entry) { return entry.first == key; }) > 0;
}

void Dictionary::reserve(std::size_t count) {
    m_entries.reserve(count);
}

std::size_t Dictionary::size() const {
    return m_entries.size();
}

bool Dictionary::empty() const {
    return m_entries.empty();
}

const Dictionary::Entry *Dictionary::begin() const {
    return m_entries.data();
}

const Dictionary::Entry *Dictionary::end() const {
    return m_entries.data() + m_entries.size();
}

bool Dictionary::operator==(const Dictionary &other) const {
    if (m_entries == other.m_entries) {
        return true;
    }
    return size() == other.size() && std::ranges::all_of(m_entries, [&other](const Entry &entry) {
               const Value *counterpart = other.find(entry.first);
               return counterpart != nullptr && *counterpart == entry.second;
           });
}

bool ForeignObject::Field::operator==(const Field &other) const {
    return name == other.name && isReference == other.isReference &&
           (value == nullptr || other.value == nullptr ? value == other.value
                                                       : *value == *other.value);
}

bool Value::operator==(const Value &other) const {
    return m_content == other.m_content;
}

}  // namespace quorbel
