#pragma once

#include "platform/Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// One object of a binary property list, found but not decoded. Refers to the list's bytes.
struct PropertyListItem {
    enum class Kind : std::uint8_t {
        kDamaged,  ///< a marker that means nothing here, or content that does not fit in the list
        kBoolean,
        kInteger,
        kReal,
        kDate,
        kData,
        kNarrowText,  ///< ASCII; some writers put UTF-8 here
        kWideText,    ///< UTF-16, big-endian
        kReference,   ///< the number of an object in a keyed archive ("UID")
        kArray,
        kDictionary,
    };

    Kind kind = Kind::kDamaged;
    std::size_t count = 0;   ///< an array's elements, a dictionary's pairs
    std::string_view bytes;  ///< the content without marker and length

    [[nodiscard]] bool isText() const {
        return kind == Kind::kNarrowText || kind == Kind::kWideText;
    }
    /// Whether this is that text, which is ASCII. Some writers widen that, too.
    [[nodiscard]] bool isText(std::string_view ascii) const;
    /// A text as UTF-8, with U+FFFD for each unpaired surrogate. Nothing when this is no text.
    [[nodiscard]] std::optional<std::string> text() const;
    /// The number that a reference holds.
    [[nodiscard]] std::optional<std::uint64_t> reference() const;
    /// The value, when this is neither a container nor a reference nor damaged.
    [[nodiscard]] std::optional<Value> scalar() const;
};

/// Finds the objects of a binary property list ("bplist00"), one at a time, without building a
/// tree: nothing is allocated, and each step costs the same whatever the bytes claim.
class BinaryPropertyListReader {
public:
    /// Nothing when the header, the trailer or the offset table is damaged. The bytes must outlive
    /// the reader and its items.
    static std::optional<BinaryPropertyListReader> open(std::string_view bytes);

    [[nodiscard]] PropertyListItem top() const { return object(m_top); }
    /// An array's element.
    [[nodiscard]] PropertyListItem element(const PropertyListItem &array, std::size_t index) const;
    [[nodiscard]] PropertyListItem key(const PropertyListItem &dictionary, std::size_t index) const;
    [[nodiscard]] PropertyListItem value(const PropertyListItem &dictionary,
                                         std::size_t index) const;
    /// The value of a dictionary's key, damaged when it has no such key or is no dictionary. Walks
    /// the pairs.
    [[nodiscard]] PropertyListItem value(const PropertyListItem &dictionary,
                                         std::string_view key) const;

private:
    BinaryPropertyListReader() = default;

    [[nodiscard]] bool areOffsetsInside() const;
    [[nodiscard]] std::uint64_t offset(std::uint64_t number) const;
    [[nodiscard]] PropertyListItem object(std::uint64_t number) const;

    std::string_view m_objects;  // header and objects, up to the offset table
    std::string_view m_offsets;
    std::size_t m_offsetSize = 0;
    std::size_t m_referenceSize = 0;
    std::uint64_t m_count = 0;
    std::uint64_t m_top = 0;
};

}  // namespace quorbel
