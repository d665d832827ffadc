#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorbel {

/// Collects the objects of a binary property list ("bplist00") and then writes them.
///
/// Each add... operation returns the number by which containers name the object. Equal texts, data,
/// dates and numbers of one type are one object: 1, 1.0 and true stay apart, as do 0.0 and -0.0.
/// Only where a small list would unfold to very much text are there several objects for one text:
/// readers take such a list for an attack. Texts and data are not copied: they must outlive the
/// writer.
class BinaryPropertyListWriter {
public:
    using Number = std::uint32_t;

    /// How much text may be named again at first, counted twice; each new text allows for as much
    /// as it has.
    static constexpr std::size_t kShareableText = std::size_t{16} << 20U;

    Number addBoolean(bool value);
    Number addInteger(std::int64_t value);
    Number addUnsigned(std::uint64_t value);
    Number addReal(double value);
    Number addDate(double secondsSince2001);
    /// UTF-8; each malformed byte in it is written as U+FFFD.
    Number addText(std::string_view text);
    Number addData(std::string_view bytes);
    /// The number of an object in a keyed archive ("UID"). Always a new object.
    Number addReference(Number number);
    Number addArray(std::span<const Number> elements);
    /// As many keys as values.
    Number addDictionary(std::span<const Number> keys, std::span<const Number> values);

    /// The whole list, with offsets and numbers in as few bytes as they fit in.
    [[nodiscard]] std::string write(Number top) const;

private:
    enum class Kind : std::uint8_t {
        kBoolean,
        kInteger,
        kUnsigned,
        kReal,
        kDate,
        kReference,
        kAscii,
        kWideText,
        kData,
        kArray,
        kDictionary,
    };
    struct Object {
        Kind kind;
        /// A number's bits; the place of a text or data in m_texts; the place in m_elements where
        /// a container's count stands, followed by its elements.
        std::uint64_t content;
    };
    struct Slot {
        std::uint32_t hash = 0;
        Number numberPlusOne = 0;
    };
    using NumbersByBits = std::unordered_map<std::uint64_t, Number>;

    Number append(Kind kind, std::uint64_t content);
    Number addBits(NumbersByBits &known, Kind kind, std::uint64_t bits);
    Number addBytes(Kind kind, std::string_view bytes);
    void growSlots();
    Number addContainer(Kind kind, std::span<const Number> first, std::span<const Number> second);
    void writeObject(std::string &output, const Object &object, std::size_t numberSize) const;
    void writeContainer(std::string &output, const Object &object, std::size_t numberSize) const;

    std::vector<Object> m_objects;
    std::vector<std::string_view> m_texts;
    std::vector<Number> m_elements;
    std::size_t m_largestSize = 0;             // an upper bound of what the objects take
    std::size_t m_shareable = kShareableText;  // bytes of text still to be named again

    NumbersByBits m_booleans;
    NumbersByBits m_integers;
    NumbersByBits m_unsigneds;
    NumbersByBits m_reals;
    NumbersByBits m_dates;
    std::vector<Slot> m_slots;  // the texts and data, in a table with open addressing
};

}  // namespace quorbel
