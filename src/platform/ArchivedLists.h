#pragma once

#include "platform/ArchivedObjects.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// The arrays of lines that a command in a keyed archive holds (see LineCommand), read where they
/// stand.
class ArchivedLists : private ArchivedObjects {
public:
    /// Of an archive whose root is a dictionary: "command", whose value is that text, and these
    /// keys in their order, whose values are arrays. Nothing for any other archive, which
    /// readKeyedArchive() may well read. The bytes outlive the object.
    static std::optional<ArchivedLists> open(std::string_view bytes, std::string_view command,
                                             const std::vector<std::string_view> &keys);

    /// Of the key of that number.
    [[nodiscard]] std::size_t count(std::size_t key) const { return m_lists[key].count; }

    /// Calls `handle(line)` for each line of a key; it is there as long as this object and the
    /// bytes are. False when one is no text: then readKeyedArchive() knows more.
    template <typename Handle>
    bool forEach(std::size_t key, const Handle &handle) {
        for (std::size_t index = 0; index < count(key); ++index) {
            const auto line = lasting(textAt(m_lists[key], index));
            if (!line) {
                return false;
            }
            handle(*line);
        }
        return true;
    }

private:
    using ArchivedObjects::ArchivedObjects;

    std::vector<PropertyListItem> m_lists;
};

}  // namespace quorbel
