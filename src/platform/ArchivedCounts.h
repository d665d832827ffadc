#pragma once

#include "platform/BinaryPropertyListReader.h"
#include "platform/Text.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// The lines that a command in a keyed archive holds with their counts (see LineCommand), read
/// where they stand: no values are made of millions of them.
class ArchivedCounts {
public:
    /// Of an archive whose root is a dictionary of two keys: "command", whose value is that text,
    /// and `key`, whose value is a dictionary. Nothing for any other archive, which
    /// readKeyedArchive() may well read. The bytes outlive the object.
    static std::optional<ArchivedCounts> open(std::string_view bytes, std::string_view command,
                                              std::string_view key);

    [[nodiscard]] std::size_t count() const { return m_entries.keys.count; }

    /// Calls `handle(line, count)` for each entry in its order; the line is there as long as this
    /// object and the bytes are, the count, which is any text, until the next. False when `handle`
    /// returned it, or when an entry is not such a pair of texts: then readKeyedArchive() knows
    /// more. That of equal lines only the first one counts is the caller's business.
    template <typename Handle>
    bool forEach(const Handle &handle) {
        for (std::size_t index = 0; index < count(); ++index) {
            const auto line = lasting(textAt(m_entries.keys, index));
            const PropertyListItem number = textAt(m_entries.values, index);
            if (!line || number.kind != PropertyListItem::Kind::kNarrowText ||
                !isUtf8(number.bytes) || !handle(*line, number.bytes)) {
                return false;
            }
        }
        return true;
    }

private:
    /// References to as many keys as values.
    struct Entries {
        PropertyListItem keys;
        PropertyListItem values;
    };

    explicit ArchivedCounts(const BinaryPropertyListReader &list) : m_list(list) {}
    [[nodiscard]] PropertyListItem object(const PropertyListItem &reference) const;
    [[nodiscard]] PropertyListItem textAt(const PropertyListItem &references,
                                          std::size_t index) const;
    [[nodiscard]] bool isDictionary(const PropertyListItem &type) const;
    [[nodiscard]] std::optional<Entries> dictionary(const PropertyListItem &object) const;
    std::optional<std::string_view> lasting(const PropertyListItem &text);

    BinaryPropertyListReader m_list;
    PropertyListItem m_objects;
    Entries m_entries;
    std::deque<std::string> m_decoded;  // lines that stand in the archive otherwise than in UTF-8
};

}  // namespace quorbel
