#pragma once

#include "platform/BinaryPropertyListReader.h"
#include "platform/KeyedArchiveNames.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// A command in a keyed archive, read where it stands: no values are made of millions of lines.
/// What it does not understand, readKeyedArchive() may well.
class ArchivedObjects {
protected:
    /// References to as many keys as values.
    struct Entries {
        PropertyListItem keys;
        PropertyListItem values;
    };

    /// The bytes outlive the object.
    explicit ArchivedObjects(const BinaryPropertyListReader &list, std::size_t bytes)
        : m_list(list),
          m_mostDecoded(2 * bytes + kShared),
          m_objects(list.value(list.top(), archive::kObjects)) {}

    /// The entries of the root, when it is a dictionary whose first key is "command", with that
    /// value.
    [[nodiscard]] std::optional<Entries> command(std::string_view name) const;
    [[nodiscard]] PropertyListItem object(const PropertyListItem &reference) const;
    [[nodiscard]] PropertyListItem element(const PropertyListItem &references,
                                           std::size_t index) const {
        return object(m_list.element(references, index));
    }
    [[nodiscard]] PropertyListItem textAt(const PropertyListItem &references,
                                          std::size_t index) const;
    [[nodiscard]] std::optional<Entries> dictionary(const PropertyListItem &object) const;
    /// References to an array's elements.
    [[nodiscard]] std::optional<PropertyListItem> array(const PropertyListItem &object) const;
    /// A text, there as long as this object and the bytes are. Nothing for no text, nor for much
    /// more that has to be decoded than the bytes hold: one text may be named over and over.
    std::optional<std::string_view> lasting(const PropertyListItem &text);

private:
    static constexpr std::size_t kShared = std::size_t{16} << 20U;

    [[nodiscard]] bool isOf(const PropertyListItem &object, std::string_view name) const;

    BinaryPropertyListReader m_list;
    std::size_t m_mostDecoded;
    PropertyListItem m_objects;
    std::deque<std::string> m_decoded;  // texts that stand in the archive otherwise than in UTF-8
};

}  // namespace quorbel
