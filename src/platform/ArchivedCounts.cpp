#include "platform/ArchivedCounts.h"

#include "platform/KeyedArchiveNames.h"
#include "platform/Utf8.h"

#include <utility>

namespace quorbel {

using Item = PropertyListItem;
using Kind = Item::Kind;

std::optional<ArchivedCounts> ArchivedCounts::open(std::string_view bytes, std::string_view command,
                                                   std::string_view key) {
    const auto list = BinaryPropertyListReader::open(bytes);
    if (!list) {
        return std::nullopt;
    }
    ArchivedCounts counts(*list);
    counts.m_objects = list->value(list->top(), archive::kObjects);
    const Item top = list->value(list->top(), archive::kTop);
    const auto root = counts.dictionary(counts.object(list->value(top, archive::kRoot)));
    if (!root || root->keys.count != 2 ||  //
        !counts.textAt(root->keys, 0).isText("command") ||
        !counts.textAt(root->values, 0).isText(command) ||
        !counts.textAt(root->keys, 1).isText(key)) {
        return std::nullopt;
    }
    const auto entries = counts.dictionary(counts.object(list->element(root->values, 1)));
    if (!entries) {
        return std::nullopt;
    }
    counts.m_entries = *entries;
    return counts;
}

/// Damaged for nil and for what is no reference to one of the objects.
Item ArchivedCounts::object(const Item &reference) const {
    const auto number = reference.reference().value_or(0);
    return m_objects.kind == Kind::kArray && number != 0 && number < m_objects.count
               ? m_list.element(m_objects, number)
               : Item();
}

Item ArchivedCounts::textAt(const Item &references, std::size_t index) const {
    const Item text = object(m_list.element(references, index));
    return text.isText() ? text : Item();
}

/// Whether a class is that of dictionaries as the front-end writes it. What says another thing of
/// itself in each of its names is for those who look at all of them.
bool ArchivedCounts::isDictionary(const Item &type) const {
    const Item names = m_list.value(type, archive::kClasses);
    return names.kind == Kind::kArray && names.count == 2 &&
           m_list.element(names, 0).isText(archive::kDictionaryClass) &&
           m_list.element(names, 1).isText(archive::kObjectClass);
}

std::optional<ArchivedCounts::Entries> ArchivedCounts::dictionary(const Item &object) const {
    const Item keys = m_list.value(object, archive::kCollectionKeys);
    const Item values = m_list.value(object, archive::kCollectionObjects);
    if (!isDictionary(this->object(m_list.value(object, archive::kClass))) ||
        keys.kind != Kind::kArray || values.kind != Kind::kArray || keys.count != values.count) {
        return std::nullopt;
    }
    return Entries{keys, values};
}

std::optional<std::string_view> ArchivedCounts::lasting(const Item &text) {
    if (text.kind == Kind::kNarrowText && asciiPrefixLength(text.bytes) == text.bytes.size()) {
        return text.bytes;
    }
    auto decoded = text.text();
    if (!decoded) {
        return std::nullopt;
    }
    return m_decoded.emplace_back(std::move(*decoded));
}

}  // namespace quorbel
