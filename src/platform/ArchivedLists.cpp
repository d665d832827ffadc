#include "platform/ArchivedLists.h"

namespace quorbel {

std::optional<ArchivedLists> ArchivedLists::open(std::string_view bytes, std::string_view command,
                                                 const std::vector<std::string_view> &keys) {
    const auto list = BinaryPropertyListReader::open(bytes);
    if (!list) {
        return std::nullopt;
    }
    ArchivedLists lists(*list, bytes.size());
    const auto root = lists.command(command);
    if (!root || root->keys.count != keys.size() + 1) {
        return std::nullopt;
    }
    for (std::size_t number = 1; number <= keys.size(); ++number) {
        const auto lines = lists.array(lists.element(root->values, number));
        if (!lines || !lists.textAt(root->keys, number).isText(keys[number - 1])) {
            return std::nullopt;
        }
        lists.m_lists.push_back(*lines);
    }
    return lists;
}

}  // namespace quorbel
