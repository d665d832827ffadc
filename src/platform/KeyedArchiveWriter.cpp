#include "platform/BinaryPropertyListWriter.h"
#include "platform/KeyedArchive.h"
#include "platform/KeyedArchiveNames.h"

#include <array>
#include <bit>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

using Number = BinaryPropertyListWriter::Number;

using ClassNames = std::vector<std::string>;

const ClassNames kNullClass{"NSNull", "NSObject"};
const ClassNames kStringClass{"NSMutableString", "NSString", "NSObject"};
const ClassNames kDateClass{"NSDate", "NSObject"};
const ClassNames kArrayClass{std::string(archive::kArrayClass), std::string(archive::kObjectClass)};
const ClassNames kDictionaryClass{std::string(archive::kDictionaryClass),
                                  std::string(archive::kObjectClass)};

/// Builds the object graph of one archive.
///
/// An object is known in the archive by its index in $objects, and in the property list by the
/// number that the list's writer gave it.
class ArchiveWriter {
public:
    /// The value must outlive the writer.
    std::string write(const Value &root);

private:
    using Index = Number;

    static constexpr Index kNil = 0;

    Index add(const Value &value);
    Index addScalar(Number number);
    Index addText(const std::string &text);
    Index addNull();
    Index addDate(Date date);
    Index addArray(const Array &array);
    Index addDictionary(const Dictionary &dictionary);
    Index addForeign(const ForeignObject &object);
    Index addClass(const ClassNames &names);

    Index reserveIndex();
    void setInstance(Index index, std::vector<Number> keys, std::vector<Number> values,
                     const ClassNames &type);
    Number scalarNumber(const Value &value);
    Number inPlace(const Value &value);
    Number fieldContent(const ForeignObject::Field &field);
    Number reference(Index index);
    Number word(std::string_view text) { return m_list.addText(text); }

    BinaryPropertyListWriter m_list;
    std::vector<Number> m_objects;
    std::vector<Index> m_scalars;      // by the number in the list; kNil when not in $objects
    std::vector<Number> m_references;  // by the index; 0 when there is none yet
    std::unordered_map<std::uint64_t, Index> m_dates;
    std::map<ClassNames, Index> m_classes;
    Index m_null = kNil;
    Index m_nullText = kNil;  // the text, not the value
};

std::string ArchiveWriter::write(const Value &root) {
    m_objects.push_back(word(archive::kNull));  // number 0, which is no reference's number
    const Number rootReference = reference(add(root));
    const Number rootKey = word(archive::kRoot);
    const Number top = m_list.addDictionary({&rootKey, 1}, {&rootReference, 1});
    const std::array keys{word(archive::kVersion), word(archive::kArchiver), word(archive::kTop),
                          word(archive::kObjects)};
    const std::array values{m_list.addInteger(archive::kVersionNumber),
                            word(archive::kArchiverName), top, m_list.addArray(m_objects)};
    return m_list.write(m_list.addDictionary(keys, values));
}

ArchiveWriter::Index ArchiveWriter::add(const Value &value) {
    switch (value.type()) {
        case Value::Type::kNull:
            return addNull();
        case Value::Type::kDate:
            return addDate(*value.date());
        case Value::Type::kArray:
            return addArray(*value.array());
        case Value::Type::kDictionary:
            return addDictionary(*value.dictionary());
        case Value::Type::kForeign:
            return addForeign(*value.foreign());
        case Value::Type::kString:
            return addText(*value.string());
        default:
            return addScalar(scalarNumber(value));
    }
}

Number ArchiveWriter::scalarNumber(const Value &value) {
    switch (value.type()) {
        case Value::Type::kBoolean:
            return m_list.addBoolean(*value.boolean());
        case Value::Type::kInteger:
            return m_list.addInteger(*value.integer());
        case Value::Type::kUnsigned:
            return m_list.addUnsigned(*value.unsignedInteger());
        case Value::Type::kReal:
            return m_list.addReal(*value.real());
        case Value::Type::kData:
            return m_list.addData(value.data()->bytes);
        default:
            return word(*value.string());
    }
}

ArchiveWriter::Index ArchiveWriter::addScalar(Number number) {
    if (number >= m_scalars.size()) {
        m_scalars.resize(std::size_t{number} + 1, kNil);
    }
    if (m_scalars[number] == kNil) {
        m_scalars[number] = reserveIndex();
        m_objects.back() = number;
    }
    return m_scalars[number];
}

/// Readers take every object that is the text "$null" for nil, whatever its number. Within an
/// object of a class, it is a text like any other.
ArchiveWriter::Index ArchiveWriter::addText(const std::string &text) {
    if (text != archive::kNull) {
        return addScalar(word(text));
    }
    if (m_nullText == kNil) {
        m_nullText = reserveIndex();
        setInstance(m_nullText, {word(archive::kStringContent)}, {word(text)}, kStringClass);
    }
    return m_nullText;
}

Number ArchiveWriter::reference(Index index) {
    if (index >= m_references.size()) {
        m_references.resize(std::size_t{index} + 1, 0);
    }
    if (m_references[index] == 0) {
        m_references[index] = m_list.addReference(index);
    }
    return m_references[index];
}

ArchiveWriter::Index ArchiveWriter::reserveIndex() {
    m_objects.push_back(0);
    return static_cast<Index>(m_objects.size() - 1);
}

void ArchiveWriter::setInstance(Index index, std::vector<Number> keys, std::vector<Number> values,
                                const ClassNames &type) {
    keys.push_back(word(archive::kClass));
    values.push_back(reference(addClass(type)));
    m_objects[index] = m_list.addDictionary(keys, values);
}

ArchiveWriter::Index ArchiveWriter::addNull() {
    if (m_null == kNil) {
        m_null = reserveIndex();
        setInstance(m_null, {}, {}, kNullClass);
    }
    return m_null;
}

ArchiveWriter::Index ArchiveWriter::addDate(Date date) {
    const auto bits = std::bit_cast<std::uint64_t>(date.secondsSince2001);
    const auto [place, isNew] = m_dates.try_emplace(bits);
    if (isNew) {
        place->second = reserveIndex();
        setInstance(place->second, {word(archive::kDateTime)},
                    {m_list.addReal(date.secondsSince2001)}, kDateClass);
    }
    return place->second;
}

ArchiveWriter::Index ArchiveWriter::addArray(const Array &array) {
    const Index index = reserveIndex();
    std::vector<Number> elements;
    elements.reserve(array.size());
    for (const Value &element : array) {
        elements.push_back(reference(add(element)));
    }
    // The order of what is added here and below stays what it is, so that equal commands are equal
    // bytes.
    const Number content = m_list.addArray(elements);
    setInstance(index, {word(archive::kCollectionObjects)}, {content}, kArrayClass);
    return index;
}

ArchiveWriter::Index ArchiveWriter::addDictionary(const Dictionary &dictionary) {
    const Index index = reserveIndex();
    std::vector<Number> keys;
    std::vector<Number> values;
    keys.reserve(dictionary.size());
    values.reserve(dictionary.size());
    for (const auto &[key, value] : dictionary) {
        keys.push_back(reference(addText(key)));
        values.push_back(reference(add(value)));
    }
    const std::array contents{m_list.addArray(keys), m_list.addArray(values)};
    setInstance(index, {word(archive::kCollectionKeys), word(archive::kCollectionObjects)},
                {contents.front(), contents.back()}, kDictionaryClass);
    return index;
}

ArchiveWriter::Index ArchiveWriter::addForeign(const ForeignObject &object) {
    // A bare reference, as the reader makes them for those inside containers in place.
    if (object.classes.empty()) {
        const bool isNil = object.fields.empty() || object.fields.front().value == nullptr;
        return isNil ? kNil : add(*object.fields.front().value);
    }
    const Index index = reserveIndex();
    std::vector<Number> keys;
    std::vector<Number> values;
    for (const ForeignObject::Field &field : object.fields) {
        keys.push_back(word(field.name));
        values.push_back(fieldContent(field));
    }
    setInstance(index, std::move(keys), std::move(values), object.classes);
    return index;
}

Number ArchiveWriter::fieldContent(const ForeignObject::Field &field) {
    if (field.value == nullptr) {
        return reference(kNil);
    }
    return field.isReference ? reference(add(*field.value)) : inPlace(*field.value);
}

Number ArchiveWriter::inPlace(const Value &value) {
    if (const Date *date = value.date()) {
        return m_list.addDate(date->secondsSince2001);
    }
    std::vector<Number> keys;
    std::vector<Number> values;
    if (const Array *array = value.array()) {
        for (const Value &element : *array) {
            values.push_back(inPlace(element));
        }
        return m_list.addArray(values);
    }
    if (const Dictionary *dictionary = value.dictionary()) {
        for (const auto &[key, element] : *dictionary) {
            keys.push_back(word(key));
            values.push_back(inPlace(element));
        }
        return m_list.addDictionary(keys, values);
    }
    const bool isObject =
        value.type() == Value::Type::kNull || value.type() == Value::Type::kForeign;
    return isObject ? reference(add(value)) : scalarNumber(value);
}

ArchiveWriter::Index ArchiveWriter::addClass(const ClassNames &names) {
    const auto [place, isNew] = m_classes.try_emplace(names);
    if (isNew) {
        std::vector<Number> hierarchy;
        for (const std::string &name : place->first) {
            hierarchy.push_back(word(name));
        }
        const std::array keys{word(archive::kClassName), word(archive::kClasses)};
        const std::array values{hierarchy.front(), m_list.addArray(hierarchy)};
        place->second = reserveIndex();
        m_objects.back() = m_list.addDictionary(keys, values);
    }
    return place->second;
}

}  // namespace

std::string writeKeyedArchive(const Value &root) {
    return ArchiveWriter().write(root);
}

}  // namespace quorbel
