#include "platform/BinaryPropertyListReader.h"

#include "platform/Text.h"
#include "platform/Utf8.h"

#include <bit>

namespace quorbel {

namespace {

using Kind = PropertyListItem::Kind;

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kWidestNumber = 8;

// At most eight bytes, most significant first.
std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

std::string textFromUtf16(std::string_view bytes) {
    constexpr char32_t kReplacement = 0xFFFD;
    const auto unit = [bytes](std::size_t at) {
        return at < bytes.size() ? static_cast<char32_t>(bigEndian(bytes.substr(at, 2))) : 0;
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const char32_t first = unit(at);
        const char32_t second = unit(at + 2);
        if (first < 0xD800 || first > 0xDFFF) {
            appendUtf8(text, first);
        } else if (first < 0xDC00 && second >= 0xDC00 && second <= 0xDFFF) {
            appendUtf8(text, 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00));
            at += 2;
        } else {
            appendUtf8(text, kReplacement);
        }
    }
    return text;
}

// Integers of one, two and four bytes are unsigned, longer ones signed.
std::optional<Value> integer(std::string_view bytes) {
    if (bytes.size() < kWidestNumber) {
        return bigEndian(bytes);
    }
    const std::uint64_t low = bigEndian(bytes.substr(bytes.size() - kWidestNumber));
    const auto number = static_cast<std::int64_t>(low);
    if (bytes.size() == kWidestNumber) {
        return number;
    }
    const std::uint64_t high = bigEndian(bytes.substr(0, kWidestNumber));
    if (high == 0) {
        return low;
    }
    return ~high == 0 && number < 0 ? std::optional<Value>(number) : std::nullopt;
}

double real(std::string_view bytes) {
    const std::uint64_t bits = bigEndian(bytes);
    return bytes.size() == sizeof(float) ? std::bit_cast<float>(static_cast<std::uint32_t>(bits))
                                         : std::bit_cast<double>(bits);
}

// The first `count` units of a content; damaged when they are not there.
PropertyListItem content(Kind kind, std::uint64_t count, std::size_t unitSize,
                         std::string_view rest) {
    if (count > rest.size() / unitSize) {
        return {};
    }
    return {kind, 0, rest.substr(0, count * unitSize)};
}

// Takes a count that did not fit in the marker off the front of `rest`.
std::optional<std::uint64_t> longCount(std::string_view &rest) {
    const unsigned marker = rest.empty() ? 0U : static_cast<unsigned char>(rest.front());
    const std::size_t size = std::size_t{1} << (marker & 0x0F);
    if (marker >> 4 != 0x1 || size > kWidestNumber || rest.size() <= size) {
        return std::nullopt;
    }
    const std::uint64_t count = bigEndian(rest.substr(1, size));
    rest.remove_prefix(1 + size);
    return count;
}

PropertyListItem countedObject(unsigned type, unsigned low, std::string_view rest,
                               std::size_t referenceSize) {
    const std::optional<std::uint64_t> count =
        low == 0xF ? longCount(rest) : std::optional<std::uint64_t>(low);
    if (!count) {
        return {};
    }
    PropertyListItem item;
    switch (type) {
        case 0x4:
            return content(Kind::kData, *count, 1, rest);
        case 0x5:
            return content(Kind::kNarrowText, *count, 1, rest);
        case 0x6:
            return content(Kind::kWideText, *count, 2, rest);
        case 0xA:
            item = content(Kind::kArray, *count, referenceSize, rest);
            break;
        case 0xD:
            item = content(Kind::kDictionary, *count, 2 * referenceSize, rest);
            break;
        default:
            return {};
    }
    item.count = *count;
    return item;
}

}  // namespace

bool PropertyListItem::isText(std::string_view ascii) const {
    if (kind != Kind::kWideText) {
        return kind == Kind::kNarrowText && bytes == ascii;
    }
    if (bytes.size() != 2 * ascii.size()) {
        return false;
    }
    for (std::size_t at = 0; at < ascii.size(); ++at) {
        if (bytes[2 * at] != '\0' || bytes[2 * at + 1] != ascii[at]) {
            return false;
        }
    }
    return true;
}

std::optional<std::string> PropertyListItem::text() const {
    if (kind == Kind::kWideText) {
        return textFromUtf16(bytes);
    }
    return kind == Kind::kNarrowText && isUtf8(bytes) ? std::optional<std::string>(bytes)
                                                      : std::nullopt;
}

std::optional<std::uint64_t> PropertyListItem::reference() const {
    return kind == Kind::kReference ? std::optional(bigEndian(bytes)) : std::nullopt;
}

std::optional<Value> PropertyListItem::scalar() const {
    switch (kind) {
        case Kind::kBoolean:
            return bytes.front() == '\x09';
        case Kind::kInteger:
            return integer(bytes);
        case Kind::kReal:
            return real(bytes);
        case Kind::kDate:
            return Date{real(bytes)};
        case Kind::kData:
            return Data{std::string(bytes)};
        case Kind::kNarrowText:
        case Kind::kWideText:
            return text();
        default:
            return std::nullopt;
    }
}

std::optional<BinaryPropertyListReader> BinaryPropertyListReader::open(std::string_view bytes) {
    if (!bytes.starts_with(kMagic) || bytes.size() < kMagic.size() + kTrailerSize) {
        return std::nullopt;
    }
    // Six bytes of no meaning, the two sizes, then three numbers of eight bytes.
    const std::string_view trailer = bytes.substr(bytes.size() - kTrailerSize);
    BinaryPropertyListReader reader;
    reader.m_offsetSize = bigEndian(trailer.substr(6, 1));
    reader.m_referenceSize = bigEndian(trailer.substr(7, 1));
    reader.m_count = bigEndian(trailer.substr(8, 8));
    reader.m_top = bigEndian(trailer.substr(16, 8));
    const std::uint64_t table = bigEndian(trailer.substr(24, 8));
    const std::size_t end = bytes.size() - kTrailerSize;
    if (table < kMagic.size() || table > end || reader.m_offsetSize == 0 ||
        reader.m_offsetSize > kWidestNumber || reader.m_referenceSize == 0 ||
        reader.m_referenceSize > kWidestNumber || reader.m_top >= reader.m_count ||
        reader.m_count > (end - table) / reader.m_offsetSize ||
        reader.m_count * reader.m_offsetSize != end - table) {
        return std::nullopt;
    }
    reader.m_objects = bytes.substr(0, table);
    reader.m_offsets = bytes.substr(table, end - table);
    return reader.areOffsetsInside() ? std::optional(reader) : std::nullopt;
}

bool BinaryPropertyListReader::areOffsetsInside() const {
    for (std::uint64_t number = 0; number < m_count; ++number) {
        const std::uint64_t start = offset(number);
        if (start < kMagic.size() || start >= m_objects.size()) {
            return false;
        }
    }
    return true;
}

std::uint64_t BinaryPropertyListReader::offset(std::uint64_t number) const {
    return bigEndian(m_offsets.substr(number * m_offsetSize, m_offsetSize));
}

PropertyListItem BinaryPropertyListReader::element(const PropertyListItem &array,
                                                   std::size_t index) const {
    return object(bigEndian(array.bytes.substr(index * m_referenceSize, m_referenceSize)));
}

PropertyListItem BinaryPropertyListReader::key(const PropertyListItem &dictionary,
                                               std::size_t index) const {
    return element(dictionary, index);
}

PropertyListItem BinaryPropertyListReader::value(const PropertyListItem &dictionary,
                                                 std::size_t index) const {
    return element(dictionary, dictionary.count + index);
}

PropertyListItem BinaryPropertyListReader::value(const PropertyListItem &dictionary,
                                                 std::string_view wanted) const {
    if (dictionary.kind == Kind::kDictionary) {
        for (std::size_t index = 0; index < dictionary.count; ++index) {
            if (key(dictionary, index).isText(wanted)) {
                return value(dictionary, index);
            }
        }
    }
    return {};
}

PropertyListItem BinaryPropertyListReader::object(std::uint64_t number) const {
    if (number >= m_count) {
        return {};
    }
    std::string_view rest = m_objects.substr(offset(number));
    const std::string_view marker = rest.substr(0, 1);
    const unsigned type = static_cast<unsigned char>(marker.front()) >> 4;
    const unsigned low = static_cast<unsigned char>(marker.front()) & 0x0FU;
    rest.remove_prefix(1);
    switch (type) {
        case 0x0:
            return low == 0x8 || low == 0x9 ? PropertyListItem{Kind::kBoolean, 0, marker}
                                            : PropertyListItem{};
        case 0x1:
            return low > 4 ? PropertyListItem{}
                           : content(Kind::kInteger, 1, std::size_t{1} << low, rest);
        case 0x2:
            return low != 2 && low != 3 ? PropertyListItem{}
                                        : content(Kind::kReal, 1, std::size_t{1} << low, rest);
        case 0x3:
            return low != 3 ? PropertyListItem{} : content(Kind::kDate, 1, sizeof(double), rest);
        case 0x8:
            return low >= kWidestNumber ? PropertyListItem{}
                                        : content(Kind::kReference, 1, low + 1, rest);
        default:
            return countedObject(type, low, rest, m_referenceSize);
    }
}

}  // namespace quorbel
