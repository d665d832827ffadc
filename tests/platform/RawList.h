#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel::testing {

/// Binary property lists byte by byte, for what libplist does not write.

inline std::uint64_t numberAt(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(at, size)) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

inline std::string bigEndian(std::uint64_t number, std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t at = size; at-- > 0; number >>= 8U) {
        bytes[at] = static_cast<char>(number & 0xFFU);
    }
    return bytes;
}

/// An object's marker and its count.
inline std::string head(unsigned type, std::uint64_t count) {
    constexpr std::uint64_t kCountFollows = 15;
    std::string bytes(1, static_cast<char>(type << 4U | std::min(count, kCountFollows)));
    return count < kCountFollows ? bytes : bytes + '\x13' + bigEndian(count, 8);
}

/// A list of objects that are encoded already.
inline std::string rawList(const std::vector<std::string> &objects, std::uint64_t top,
                           std::size_t referenceSize) {
    std::string bytes = "bplist00";
    std::string offsets;
    for (const std::string &object : objects) {
        offsets += bigEndian(bytes.size(), 8);
        bytes += object;
    }
    const std::size_t table = bytes.size();
    bytes += offsets + std::string(6, '\0') + '\x08' + static_cast<char>(referenceSize);
    return bytes + bigEndian(objects.size(), 8) + bigEndian(top, 8) + bigEndian(table, 8);
}

/// The encoded objects of a list, in the order of their numbers.
inline std::vector<std::string> objectsOf(std::string_view list) {
    const std::size_t trailer = list.size() - 32;
    const std::size_t offsetSize = numberAt(list, trailer + 6, 1);
    const std::size_t count = numberAt(list, trailer + 8, 8);
    const std::size_t table = numberAt(list, trailer + 24, 8);
    std::vector<std::size_t> begins;
    for (std::size_t number = 0; number < count; ++number) {
        begins.push_back(numberAt(list, table + number * offsetSize, offsetSize));
    }
    std::vector<std::size_t> ends = begins;
    ends.push_back(table);
    std::sort(ends.begin(), ends.end());
    std::vector<std::string> objects;
    for (const std::size_t begin : begins) {
        const std::size_t end = *std::upper_bound(ends.begin(), ends.end(), begin);
        objects.emplace_back(list.substr(begin, end - begin));
    }
    return objects;
}

}  // namespace quorbel::testing
