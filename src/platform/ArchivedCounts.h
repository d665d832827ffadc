#pragma once

#include "platform/ArchivedObjects.h"
#include "platform/Text.h"
#include "platform/Utf8.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace quorbel {

/// The lines that a command in a keyed archive holds with their counts (see LineCommand), read
/// where they stand.
class ArchivedCounts : private ArchivedObjects {
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
    using ArchivedObjects::ArchivedObjects;

    Entries m_entries;
};

}  // namespace quorbel
