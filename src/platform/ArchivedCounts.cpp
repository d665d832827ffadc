#include "platform/ArchivedCounts.h"

namespace quorbel {

std::optional<ArchivedCounts> ArchivedCounts::open(std::string_view bytes, std::string_view command,
                                                   std::string_view key) {
    const auto list = BinaryPropertyListReader::open(bytes);
    if (!list) {
        return std::nullopt;
    }
    ArchivedCounts counts(*list, bytes.size());
    const auto root = counts.command(command);
    if (!root || root->keys.count != 2 || !counts.textAt(root->keys, 1).isText(key)) {
        return std::nullopt;
    }
    const auto entries = counts.dictionary(counts.element(root->values, 1));
    if (!entries) {
        return std::nullopt;
    }
    counts.m_entries = *entries;
    return counts;
}

}  // namespace quorbel
