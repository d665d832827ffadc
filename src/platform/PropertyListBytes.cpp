#include "platform/PropertyListBytes.h"

#include "platform/Utf8.h"

#include <array>
#include <bit>

namespace quorbel::propertylist {

namespace {

void appendHead(std::string &output, unsigned type, std::size_t count) {
    constexpr std::size_t kCountFollows = 0xF;
    if (count < kCountFollows) {
        output += static_cast<char>(type << 4 | count);
    } else {
        output += static_cast<char>(type << 4 | kCountFollows);
        appendInteger(output, count);
    }
}

}  // namespace

void appendBigEndian(std::string &output, std::uint64_t number, std::size_t size) {
    std::array<char, sizeof number> bytes{};
    for (std::size_t at = bytes.size(); at-- > 0; number >>= 8) {
        bytes[at] = static_cast<char>(number & 0xFF);
    }
    output.append(bytes.end() - size, bytes.end());
}

// The sizes that readers take are powers of two.
std::size_t smallestSize(std::uint64_t number) {
    std::size_t size = 1;
    while (size < sizeof number && number >> (8 * size) != 0) {
        size *= 2;
    }
    return size;
}

// Integers of up to four bytes are read as unsigned: a negative one takes eight.
void appendInteger(std::string &output, std::uint64_t bits) {
    const std::size_t size = smallestSize(bits);
    output += static_cast<char>(0x10 | std::countr_zero(size));
    appendBigEndian(output, bits, size);
}

void appendWideText(std::string &output, std::string_view text) {
    std::string units;
    units.reserve(2 * text.size());
    while (!text.empty()) {
        constexpr Utf8Character kReplacement{0xFFFD, 1};
        const Utf8Character found = firstUtf8Character(text);
        const Utf8Character character = found.length == 0 ? kReplacement : found;
        if (character.code < 0x10000) {
            appendBigEndian(units, character.code, 2);
        } else {
            const char32_t rest = character.code - 0x10000;
            appendBigEndian(units, 0xD800 + (rest >> 10), 2);
            appendBigEndian(units, 0xDC00 + (rest & 0x3FF), 2);
        }
        text.remove_prefix(character.length);
    }
    appendHead(output, 0x6, units.size() / 2);
    output += units;
}

void appendReference(std::string &output, std::uint64_t number) {
    output += static_cast<char>(0x80 | (smallestSize(number) - 1));
    appendBigEndian(output, number, smallestSize(number));
}

void appendAsciiText(std::string &output, std::string_view text) {
    appendHead(output, 0x5, text.size());
    output += text;
}

void appendData(std::string &output, std::string_view bytes) {
    appendHead(output, 0x4, bytes.size());
    output += bytes;
}

void appendArrayHead(std::string &output, std::size_t count) {
    appendHead(output, 0xA, count);
}

void appendDictionaryHead(std::string &output, std::size_t count) {
    appendHead(output, 0xD, count);
}

void appendTrailer(std::string &output, const Trailer &trailer) {
    output.append(6, '\0');  // of no meaning
    appendBigEndian(output, trailer.offsetSize, 1);
    appendBigEndian(output, trailer.numberSize, 1);
    for (const std::uint64_t number :
         {std::uint64_t{trailer.objectCount}, trailer.top, trailer.table}) {
        appendBigEndian(output, number, sizeof number);
    }
}

}  // namespace quorbel::propertylist
