#include "platform/Utf8.h"

#include <array>
#include <cstring>

namespace quorbel {

std::size_t asciiPrefixLength(std::string_view text) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::size_t at = 0;
    std::array<std::uint64_t, 4> block{};
    for (; text.size() - at >= sizeof block; at += sizeof block) {
        std::memcpy(block.data(), text.data() + at, sizeof block);
        if (((block[0] | block[1] | block[2] | block[3]) & kHighBits) != 0) {
            break;
        }
    }
    for (; text.size() - at >= sizeof(std::uint64_t); at += sizeof(std::uint64_t)) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if ((bytes & kHighBits) != 0) {
            break;
        }
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) {
        ++at;
    }
    return at;
}

}  // namespace quorbel
