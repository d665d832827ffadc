#include "platform/BinaryPropertyListReader.h"
#include "platform/DictionaryBuilder.h"
#include "platform/KeyedArchive.h"
#include "platform/KeyedArchiveClasses.h"
#include "platform/KeyedArchiveNames.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>

namespace quorbel {

namespace {

using archive::ArchivedField;
using archive::ClassKind;
using Item = PropertyListItem;
using Kind = PropertyListItem::Kind;

// What allocating costs beside the bytes that are asked for, about.
constexpr std::size_t kBlockCost = 16;
constexpr std::size_t kFieldCost =
    sizeof(ForeignObject::Field) + sizeof(Value) + 2 * sizeof(void *) + 2 * kBlockCost;

/// Turns the object graph of one archive into a value. What returns nothing has said why in
/// m_reason.
class ArchiveReader {
public:
    explicit ArchiveReader(std::string_view bytes) : m_bytes(bytes) {}

    std::variant<Value, ArchiveError> read();

private:
    struct ArchivedClass {
        ClassKind kind = ClassKind::kForeign;
        std::vector<std::string> names;
        std::size_t textSize = 0;
    };

    std::nullopt_t fail(std::string_view reason);
    bool chargeItems(std::size_t count);
    bool chargeItems(std::size_t count, std::size_t itemCost);
    bool chargeText(std::size_t bytes);
    bool chargeMemory(std::size_t bytes);

    std::optional<std::uint64_t> rootNumber();
    std::optional<Value> object(std::uint64_t number, unsigned depth);
    std::optional<Value> scalar(const Item &item);
    std::optional<Value> instance(const Item &fields, unsigned depth);
    std::optional<Value> dictionary(const Item &fields, unsigned depth);
    std::optional<Value> array(const Item &fields, unsigned depth);
    std::optional<Value> foreign(const Item &fields, const ArchivedClass &type, unsigned depth);
    std::optional<ForeignObject::Field> field(std::string name, const Item &item, unsigned depth);
    std::optional<Value> inPlace(const Item &item, unsigned depth);
    std::optional<std::string> key(const Item &item, unsigned depth);
    std::optional<std::string> word(const Item &item);
    const ArchivedClass *archivedClass(const Item &fields);
    std::optional<ArchivedClass> readClass(const Item &entry);

    static constexpr unsigned kDeepest = 512;

    std::string_view m_bytes;
    std::optional<BinaryPropertyListReader> m_list;
    Item m_objects;
    // Without sharing, an archive has a byte or more for each item and for each byte of text. These
    // leave room for the sharing that real documents have.
    std::size_t m_itemsLeft = 100'000 + 2 * m_bytes.size();
    std::size_t m_textLeft = (std::size_t{16} << 20) + 4 * m_bytes.size();
    // An item without sharing has some more bytes, in the table of offsets and in what refers to
    // it, and takes about as many times as much of memory as this.
    std::size_t m_memoryLeft = (std::size_t{48} << 20) + 6 * m_bytes.size();
    std::unordered_map<std::uint64_t, ArchivedClass> m_classes;
    std::string_view m_reason;
};

std::nullopt_t ArchiveReader::fail(std::string_view reason) {
    m_reason = reason;
    return std::nullopt;
}

bool ArchiveReader::chargeItems(std::size_t count) {
    if (count > m_itemsLeft) {
        fail("shared objects that expand to too many");
        return false;
    }
    m_itemsLeft -= count;
    return true;
}

bool ArchiveReader::chargeItems(std::size_t count, std::size_t itemCost) {
    return chargeItems(count) && chargeMemory(count * itemCost);
}

bool ArchiveReader::chargeText(std::size_t bytes) {
    if (bytes > m_textLeft) {
        fail("shared objects that expand to too much text");
        return false;
    }
    m_textLeft -= bytes;
    // Wide text grows as it is decoded; short text needs no block of its own.
    return chargeMemory(2 * bytes);
}

bool ArchiveReader::chargeMemory(std::size_t bytes) {
    if (bytes > m_memoryLeft) {
        fail("objects that take many times the memory of the archive");
        return false;
    }
    m_memoryLeft -= bytes;
    return true;
}

std::variant<Value, ArchiveError> ArchiveReader::read() {
    const std::optional<std::uint64_t> number = rootNumber();
    std::optional<Value> root = number ? object(*number, 0) : std::nullopt;
    if (!root) {
        return ArchiveError{std::string(m_reason)};
    }
    return std::move(*root);
}

std::optional<std::uint64_t> ArchiveReader::rootNumber() {
    m_list = BinaryPropertyListReader::open(m_bytes);
    if (!m_list) {
        return fail("not a binary property list, or a damaged one");
    }
    m_objects = m_list->value(m_list->top(), archive::kObjects);
    const Item top = m_list->value(m_list->top(), archive::kTop);
    if (m_objects.kind != Kind::kArray || top.kind != Kind::kDictionary) {
        return fail("a property list, but not a keyed archive");
    }
    Item root = m_list->value(top, archive::kRoot);
    if (root.kind == Kind::kDamaged && top.count == 1) {
        root = m_list->value(top, std::size_t{0});
    }
    const std::optional<std::uint64_t> number = root.reference();
    return number && *number != 0 ? number : fail("no root object");
}

std::optional<Value> ArchiveReader::object(std::uint64_t number, unsigned depth) {
    if (number >= m_objects.count) {
        return fail("a reference to an object that is not there");
    }
    if (depth > kDeepest) {
        return fail("objects nested too deeply, or one that contains itself");
    }
    const Item item = m_list->element(m_objects, number);
    return item.kind == Kind::kDictionary ? instance(item, depth) : scalar(item);
}

std::optional<Value> ArchiveReader::scalar(const Item &item) {
    if (!chargeText(item.bytes.size())) {
        return std::nullopt;
    }
    std::optional<Value> value = item.scalar();
    return value ? std::move(value) : fail("an object that is damaged or out of place");
}

std::optional<Value> ArchiveReader::instance(const Item &fields, unsigned depth) {
    // Looking for a field walks them all. Objects of the known classes have but a few.
    constexpr std::size_t kFreeFields = 4;
    const ArchivedClass *type =
        chargeItems(fields.count / kFreeFields) ? archivedClass(fields) : nullptr;
    if (type == nullptr) {
        return std::nullopt;
    }
    const bool isCollection = type->kind == ClassKind::kDictionary ||  //
                              type->kind == ClassKind::kArray;
    if (isCollection && m_list->value(fields, archive::kCollectionObjects).kind != Kind::kDamaged) {
        return type->kind == ClassKind::kArray ? array(fields, depth) : dictionary(fields, depth);
    }
    if (type->kind == ClassKind::kNull) {
        return Null{};
    }
    for (const ArchivedField &wrapper : archive::fieldsOfClass(type->kind)) {
        const Item content = m_list->value(fields, wrapper.name);
        if (content.kind != Kind::kDamaged) {
            const std::optional<std::uint64_t> number = content.reference();
            std::optional<Value> value = number ? object(*number, depth + 1) : scalar(content);
            value = value ? archive::converted(std::move(*value), wrapper.type) : std::nullopt;
            return value ? std::move(value)
                         : fail("a value of a different type than its class says");
        }
    }
    return foreign(fields, *type, depth);
}

std::optional<Value> ArchiveReader::dictionary(const Item &fields, unsigned depth) {
    const Item keys = m_list->value(fields, archive::kCollectionKeys);
    const Item values = m_list->value(fields, archive::kCollectionObjects);
    if (keys.kind != Kind::kArray || values.kind != Kind::kArray || keys.count != values.count) {
        return fail("a dictionary whose keys and values do not match");
    }
    if (!chargeItems(keys.count + values.count) ||
        !chargeMemory(keys.count * DictionaryBuilder::kEntryCost)) {
        return std::nullopt;
    }
    DictionaryBuilder builder(keys.count);
    for (std::size_t index = 0; index < keys.count; ++index) {
        std::optional<std::string> name = key(m_list->element(keys, index), depth);
        const std::optional<std::uint64_t> number = m_list->element(values, index).reference();
        if (!name) {
            return std::nullopt;
        }
        if (!number) {
            return fail("a dictionary value that is not a reference");
        }
        if (*number == 0) {
            continue;  // nil, which is no value at all
        }
        std::optional<Value> value = object(*number, depth + 1);
        if (!value) {
            return std::nullopt;
        }
        builder.add(std::move(*name), std::move(*value));
    }
    return builder.take();
}

std::optional<std::string> ArchiveReader::key(const Item &item, unsigned depth) {
    const std::uint64_t number = item.reference().value_or(0);
    if (number != 0 && number < m_objects.count && m_list->element(m_objects, number).isText()) {
        return word(m_list->element(m_objects, number));
    }
    const std::optional<Value> value = number != 0 ? object(number, depth + 1) : std::nullopt;
    const std::string *text = value ? value->string() : nullptr;
    return text != nullptr ? std::optional(*text) : fail("a dictionary key that is not text");
}

std::optional<Value> ArchiveReader::array(const Item &fields, unsigned depth) {
    const Item elements = m_list->value(fields, archive::kCollectionObjects);
    if (elements.kind != Kind::kArray) {
        return fail("an array without elements");
    }
    if (!chargeItems(elements.count, sizeof(Value))) {
        return std::nullopt;
    }
    Array array;
    array.reserve(elements.count);
    for (std::size_t index = 0; index < elements.count; ++index) {
        const std::optional<std::uint64_t> number = m_list->element(elements, index).reference();
        if (!number) {
            return fail("an array element that is not a reference");
        }
        if (*number == 0) {
            continue;  // nil, which is no value at all
        }
        std::optional<Value> value = object(*number, depth + 1);
        if (!value) {
            return std::nullopt;
        }
        array.push_back(std::move(*value));
    }
    return array;
}

std::optional<Value> ArchiveReader::foreign(const Item &fields, const ArchivedClass &type,
                                            unsigned depth) {
    if (!chargeItems(fields.count, kFieldCost) ||
        !chargeItems(type.names.size(), sizeof(std::string)) || !chargeText(type.textSize)) {
        return std::nullopt;
    }
    ForeignObject object;
    object.classes = type.names;
    object.fields.reserve(fields.count);
    for (std::size_t index = 0; index < fields.count; ++index) {
        std::optional<std::string> name = word(m_list->key(fields, index));
        if (!name) {
            return std::nullopt;
        }
        if (*name != archive::kClass) {
            std::optional<ForeignObject::Field> entry =
                field(std::move(*name), m_list->value(fields, index), depth + 1);
            if (!entry) {
                return std::nullopt;
            }
            object.fields.push_back(std::move(*entry));
        }
    }
    return object;
}

std::optional<ForeignObject::Field> ArchiveReader::field(std::string name, const Item &item,
                                                         unsigned depth) {
    const std::optional<std::uint64_t> number = item.reference();
    if (number == std::uint64_t{0}) {
        return ForeignObject::Field{std::move(name), true, nullptr};
    }
    std::optional<Value> value = number ? object(*number, depth) : inPlace(item, depth);
    if (!value) {
        return std::nullopt;
    }
    return ForeignObject::Field{std::move(name), number.has_value(),
                                std::make_shared<const Value>(std::move(*value))};
}

// Containers that stand in a field rather than among the objects, as in sets: their elements can be
// values or references. A reference becomes an object without a class and with one field.
std::optional<Value> ArchiveReader::inPlace(const Item &item, unsigned depth) {
    if (depth > kDeepest) {
        return fail("containers nested too deeply, or one that contains itself");
    }
    if (item.kind == Kind::kReference) {
        if (!chargeMemory(kFieldCost)) {
            return std::nullopt;
        }
        std::optional<ForeignObject::Field> only = field({}, item, depth + 1);
        return only ? std::optional<Value>(ForeignObject{{}, {std::move(*only)}}) : std::nullopt;
    }
    const bool isDictionary = item.kind == Kind::kDictionary;
    if (!isDictionary && item.kind != Kind::kArray) {
        return scalar(item);
    }
    if (!chargeItems((isDictionary ? 2 : 1) * item.count) ||
        !chargeMemory(item.count *
                      (isDictionary ? DictionaryBuilder::kEntryCost : sizeof(Value)))) {
        return std::nullopt;
    }
    Array elements;
    elements.reserve(isDictionary ? 0 : item.count);
    DictionaryBuilder pairs(isDictionary ? item.count : 0);
    for (std::size_t index = 0; index < item.count; ++index) {
        const Item element =
            isDictionary ? m_list->value(item, index) : m_list->element(item, index);
        std::optional<Value> value = inPlace(element, depth + 1);
        std::optional<std::string> name =
            isDictionary ? word(m_list->key(item, index)) : std::string();
        if (!value || !name) {
            return std::nullopt;
        }
        if (isDictionary) {
            pairs.add(std::move(*name), std::move(*value));
        } else {
            elements.push_back(std::move(*value));
        }
    }
    return isDictionary ? Value(pairs.take()) : Value(std::move(elements));
}

std::optional<std::string> ArchiveReader::word(const Item &item) {
    if (!chargeText(item.bytes.size())) {
        return std::nullopt;
    }
    std::optional<std::string> text = item.text();
    return text ? std::move(text) : fail("a name or key that is not text");
}

const ArchiveReader::ArchivedClass *ArchiveReader::archivedClass(const Item &fields) {
    const std::optional<std::uint64_t> number = m_list->value(fields, archive::kClass).reference();
    if (!number || *number == 0 || *number >= m_objects.count) {
        fail("an object without a class");
        return nullptr;
    }
    const auto found = m_classes.find(*number);
    if (found != m_classes.end()) {
        return &found->second;
    }
    std::optional<ArchivedClass> type = readClass(m_list->element(m_objects, *number));
    return type ? &m_classes.emplace(*number, std::move(*type)).first->second : nullptr;
}

std::optional<ArchiveReader::ArchivedClass> ArchiveReader::readClass(const Item &entry) {
    const Item names = m_list->value(entry, archive::kClasses);
    const bool isList = names.kind == Kind::kArray && names.count > 0;
    const std::size_t count = isList ? names.count : 1;
    if (!chargeItems(entry.count) || !chargeItems(count, sizeof(std::string)) ||
        !chargeMemory(sizeof(ArchivedClass) + 2 * kBlockCost)) {
        return std::nullopt;
    }
    ArchivedClass type;
    type.names.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        std::optional<std::string> name = word(isList ? m_list->element(names, index)
                                                      : m_list->value(entry, archive::kClassName));
        if (!name) {
            return std::nullopt;
        }
        if (type.kind == ClassKind::kForeign) {
            type.kind = archive::kindOfClass(*name);
        }
        type.textSize += name->size();
        type.names.push_back(std::move(*name));
    }
    return type;
}

}  // namespace

std::variant<Value, ArchiveError> readKeyedArchive(std::string_view bytes) {
    return ArchiveReader(bytes).read();
}

}  // namespace quorbel
