#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel::testing {

/// Property lists made and read by libplist, which knows nothing of the code under test.
///
/// A node belongs to the container that it is put into.
using Node = plist_t;

inline Node uid(std::uint64_t number) {
    return plist_new_uid(number);
}
inline Node text(const char *content) {
    return plist_new_string(content);
}
inline Node integer(std::uint64_t number) {
    return plist_new_uint(number);
}
inline Node real(double number) {
    return plist_new_real(number);
}
inline Node boolean(bool value) {
    return plist_new_bool(value ? 1 : 0);
}
inline Node data(std::string_view bytes) {
    return plist_new_data(bytes.data(), bytes.size());
}
inline Node date(std::int32_t secondsSince2001) {
    return plist_new_date(secondsSince2001, 0);
}

inline Node list(const std::vector<Node> &elements) {
    Node array = plist_new_array();
    for (Node element : elements) {
        plist_array_append_item(array, element);
    }
    return array;
}

inline Node map(const std::vector<std::pair<const char *, Node>> &pairs) {
    Node dictionary = plist_new_dict();
    for (const auto &[key, value] : pairs) {
        plist_dict_set_item(dictionary, key, value);
    }
    return dictionary;
}

/// An array of references.
inline Node uids(std::initializer_list<std::uint64_t> numbers) {
    Node array = plist_new_array();
    for (const std::uint64_t number : numbers) {
        plist_array_append_item(array, uid(number));
    }
    return array;
}

/// An object of the class that the reference `type` names.
inline Node instance(std::uint64_t type, std::vector<std::pair<const char *, Node>> fields) {
    fields.emplace_back("$class", uid(type));
    return map(fields);
}

/// A class entry: the class's own name, then its ancestors.
inline Node classEntry(const std::vector<const char *> &names) {
    Node hierarchy = plist_new_array();
    for (const char *name : names) {
        plist_array_append_item(hierarchy, text(name));
    }
    return map({{"$classes", hierarchy}, {"$classname", text(names.front())}});
}

/// Writes a list in the binary form and frees it.
inline std::string binary(Node list) {
    char *bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(list, &bytes, &length);
    std::string written(bytes, length);
    plist_to_bin_free(bytes);
    plist_free(list);
    return written;
}

/// An archive of these objects, numbered from 1. `top` becomes $top.
inline std::string archiveOf(const std::vector<Node> &objects, Node top) {
    Node all = plist_new_array();
    plist_array_append_item(all, text("$null"));
    for (Node object : objects) {
        plist_array_append_item(all, object);
    }
    return binary(map({{"$version", integer(100000)},
                       {"$archiver", text("NSKeyedArchiver")},
                       {"$top", top},
                       {"$objects", all}}));
}

inline std::string archiveOf(const std::vector<Node> &objects) {
    return archiveOf(objects, map({{"root", uid(1)}}));
}

}  // namespace quorbel::testing
