#include "platform/ArchivedObjects.h"

#include "platform/Utf8.h"

#include <utility>

namespace quorbel {

using Item = PropertyListItem;
using Kind = Item::Kind;

std::optional<ArchivedObjects::Entries> ArchivedObjects::command(std::string_view name) const {
    const Item top = m_list.value(m_list.top(), archive::kTop);
    auto root = dictionary(object(m_list.value(top, archive::kRoot)));
    const bool isIt = root && root->keys.count > 0 && textAt(root->keys, 0).isText("command") &&
                      textAt(root->values, 0).isText(name);
    return isIt ? root : std::nullopt;
}

/// Damaged for nil and for what is no reference to one of the objects.
Item ArchivedObjects::object(const Item &reference) const {
    const auto number = reference.reference().value_or(0);
    return m_objects.kind == Kind::kArray && number != 0 && number < m_objects.count
               ? m_list.element(m_objects, number)
               : Item();
}

Item ArchivedObjects::textAt(const Item &references, std::size_t index) const {
    const Item text = element(references, index);
    return text.isText() ? text : Item();
}

/// Whether an object is of a class as the front-end writes it. What says another thing of itself in
/// each of its names is for those who look at all of them.
bool ArchivedObjects::isOf(const Item &object, std::string_view name) const {
    const Item type = this->object(m_list.value(object, archive::kClass));
    const Item names = m_list.value(type, archive::kClasses);
    return names.kind == Kind::kArray && names.count == 2 &&
           m_list.element(names, 0).isText(name) &&
           m_list.element(names, 1).isText(archive::kObjectClass);
}

std::optional<ArchivedObjects::Entries> ArchivedObjects::dictionary(const Item &object) const {
    const Item keys = m_list.value(object, archive::kCollectionKeys);
    const Item values = m_list.value(object, archive::kCollectionObjects);
    if (!isOf(object, archive::kDictionaryClass) || keys.kind != Kind::kArray ||
        values.kind != Kind::kArray || keys.count != values.count) {
        return std::nullopt;
    }
    return Entries{keys, values};
}

std::optional<Item> ArchivedObjects::array(const Item &object) const {
    const Item elements = m_list.value(object, archive::kCollectionObjects);
    return isOf(object, archive::kArrayClass) && elements.kind == Kind::kArray
               ? std::optional(elements)
               : std::nullopt;
}

std::optional<std::string_view> ArchivedObjects::lasting(const Item &text) {
    if (text.kind == Kind::kNarrowText && asciiPrefixLength(text.bytes) == text.bytes.size()) {
        return text.bytes;
    }
    auto decoded = text.text();
    if (!decoded || decoded->size() > m_mostDecoded) {
        return std::nullopt;
    }
    m_mostDecoded -= decoded->size();
    return m_decoded.emplace_back(std::move(*decoded));
}

}  // namespace quorbel
