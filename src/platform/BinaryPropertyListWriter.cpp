#include "platform/BinaryPropertyListWriter.h"

#include "platform/PropertyListBytes.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace quorbel {

using namespace propertylist;

using Number = BinaryPropertyListWriter::Number;

Number BinaryPropertyListWriter::addBoolean(bool value) {
    return addBits(m_booleans, Kind::kBoolean, value ? 1 : 0);
}

Number BinaryPropertyListWriter::addInteger(std::int64_t value) {
    return addBits(m_integers, Kind::kInteger, static_cast<std::uint64_t>(value));
}

Number BinaryPropertyListWriter::addUnsigned(std::uint64_t value) {
    return std::in_range<std::int64_t>(value) ? addInteger(static_cast<std::int64_t>(value))
                                              : addBits(m_unsigneds, Kind::kUnsigned, value);
}

Number BinaryPropertyListWriter::addReal(double value) {
    return addBits(m_reals, Kind::kReal, std::bit_cast<std::uint64_t>(value));
}

Number BinaryPropertyListWriter::addDate(double secondsSince2001) {
    return addBits(m_dates, Kind::kDate, std::bit_cast<std::uint64_t>(secondsSince2001));
}

Number BinaryPropertyListWriter::addReference(Number number) {
    return append(Kind::kReference, number);
}

Number BinaryPropertyListWriter::addText(std::string_view text) {
    const bool isAscii = asciiPrefixLength(text) == text.size();
    return addBytes(isAscii ? Kind::kAscii : Kind::kWideText, text);
}

Number BinaryPropertyListWriter::addData(std::string_view bytes) {
    return addBytes(Kind::kData, bytes);
}

Number BinaryPropertyListWriter::addArray(std::span<const Number> elements) {
    return addContainer(Kind::kArray, elements, {});
}

Number BinaryPropertyListWriter::addDictionary(std::span<const Number> keys,
                                               std::span<const Number> values) {
    return addContainer(Kind::kDictionary, keys, values);
}

Number BinaryPropertyListWriter::addBits(NumbersByBits &known, Kind kind, std::uint64_t bits) {
    const auto [place, isNew] = known.try_emplace(bits);
    if (isNew) {
        place->second = append(kind, bits);
    }
    return place->second;
}

Number BinaryPropertyListWriter::addBytes(Kind kind, std::string_view bytes) {
    if (2 * (m_texts.size() + 1) > m_slots.size()) {
        growSlots();
    }
    const std::size_t mask = m_slots.size() - 1;
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(bytes));
    std::size_t at = hash & mask;
    for (; m_slots[at].numberPlusOne != 0; at = (at + 1) & mask) {
        const Number number = m_slots[at].numberPlusOne - 1;
        if (m_slots[at].hash == hash && m_objects[number].kind == kind &&
            m_texts[m_objects[number].content] == bytes) {
            if (2 * bytes.size() > m_shareable) {
                break;
            }
            m_shareable -= 2 * bytes.size();
            return number;
        }
    }
    m_shareable += 2 * bytes.size();
    m_largestSize += 2 * bytes.size();
    m_texts.push_back(bytes);
    const Number number = append(kind, m_texts.size() - 1);
    m_slots[at] = {hash, number + 1};
    return number;
}

void BinaryPropertyListWriter::growSlots() {
    constexpr std::size_t kFewest = 64;
    std::vector<Slot> slots(std::max(kFewest, 2 * m_slots.size()));
    const std::size_t mask = slots.size() - 1;
    for (const Slot &slot : m_slots) {
        if (slot.numberPlusOne != 0) {
            std::size_t at = slot.hash & mask;
            while (slots[at].numberPlusOne != 0) {
                at = (at + 1) & mask;
            }
            slots[at] = slot;
        }
    }
    m_slots = std::move(slots);
}

Number BinaryPropertyListWriter::addContainer(Kind kind, std::span<const Number> first,
                                              std::span<const Number> second) {
    const std::size_t start = m_elements.size();
    m_elements.push_back(static_cast<Number>(first.size()));
    m_elements.insert(m_elements.end(), first.begin(), first.end());
    m_elements.insert(m_elements.end(), second.begin(), second.end());
    m_largestSize += sizeof(Number) * (first.size() + second.size());
    return append(kind, start);
}

Number BinaryPropertyListWriter::append(Kind kind, std::uint64_t content) {
    // Whatever it is: a marker, and a number or a count of at most sixteen bytes.
    constexpr std::size_t kLargestHead = 17;
    m_largestSize += kLargestHead;
    m_objects.push_back({kind, content});
    return static_cast<Number>(m_objects.size() - 1);
}

std::string BinaryPropertyListWriter::write(Number top) const {
    const std::size_t numberSize = smallestSize(m_objects.size());
    const std::size_t tableSize = sizeof(std::uint64_t) * m_objects.size();
    std::vector<std::uint64_t> offsets;
    offsets.reserve(m_objects.size());
    std::string output;
    // More than needed; pages that are never written to cost nothing.
    output.reserve(m_largestSize + tableSize + kMagic.size() + kTrailerSize);
    output = kMagic;
    for (const Object &object : m_objects) {
        offsets.push_back(output.size());
        writeObject(output, object, numberSize);
    }
    const std::size_t table = output.size();
    const std::size_t offsetSize = smallestSize(table);
    for (const std::uint64_t offset : offsets) {
        appendBigEndian(output, offset, offsetSize);
    }
    appendTrailer(output, {offsetSize, numberSize, m_objects.size(), top, table});
    return output;
}

void BinaryPropertyListWriter::writeObject(std::string &output, const Object &object,
                                           std::size_t numberSize) const {
    switch (object.kind) {
        case Kind::kBoolean:
            output += object.content != 0 ? '\x09' : '\x08';
            break;
        case Kind::kInteger:
            appendInteger(output, object.content);
            break;
        case Kind::kUnsigned:
            output += '\x14';
            output.append(sizeof(std::uint64_t), '\0');
            appendBigEndian(output, object.content, sizeof(std::uint64_t));
            break;
        case Kind::kReal:
        case Kind::kDate:
            output += object.kind == Kind::kReal ? '\x23' : '\x33';
            appendBigEndian(output, object.content, sizeof(double));
            break;
        case Kind::kReference:
            appendReference(output, object.content);
            break;
        case Kind::kAscii:
            appendAsciiText(output, m_texts[object.content]);
            break;
        case Kind::kData:
            appendData(output, m_texts[object.content]);
            break;
        case Kind::kWideText:
            appendWideText(output, m_texts[object.content]);
            break;
        case Kind::kArray:
        case Kind::kDictionary:
            writeContainer(output, object, numberSize);
            break;
    }
}

void BinaryPropertyListWriter::writeContainer(std::string &output, const Object &object,
                                              std::size_t numberSize) const {
    const bool isDictionary = object.kind == Kind::kDictionary;
    const std::size_t count = m_elements[object.content];
    isDictionary ? appendDictionaryHead(output, count) : appendArrayHead(output, count);
    const std::span<const Number> elements(m_elements);
    for (const Number number :
         elements.subspan(object.content + 1, isDictionary ? 2 * count : count)) {
        appendBigEndian(output, number, numberSize);
    }
}

}  // namespace quorbel
