// The keyed archive of a LineCommand, written while its lines are read.

#include "platform/BinaryPropertyListWriter.h"
#include "platform/KeyedArchiveNames.h"
#include "platform/LineCommand.h"
#include "platform/PropertyListStream.h"

#include <array>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

using Number = PropertyListStream::Number;
using Index = Number;
using Kind = LineCommand::Kind;

/// Names the objects of one archive to a list in the order in which the writer of any value does:
/// an object is known by its index in $objects, and in the property list by its number.
///
/// `List` is a PropertyListStream, or a PropertyListCount to learn how many there will be.
template <typename List>
class LineArchive {
public:
    using Forget = std::function<void(PackedLines::Place)>;

    /// `forget` is told of the lines before which all have been read.
    LineArchive(List &list, const PackedLines &lines, Forget forget)
        : m_list(list), m_lines(lines), m_reader(lines), m_forget(std::move(forget)) {}

    /// Returns the number of the root.
    Number write(const std::string &name, std::span<const LineCommand::Part> parts);

private:
    /// What a text that comes again and again is known by; 0 while it is not.
    struct Word {
        Number number = 0;
        Index index = 0;
        Number reference = 0;
    };
    struct Instance {
        std::vector<Number> keys;
        std::vector<Number> values;
    };

    Number commandObject(const std::string &name, std::span<const LineCommand::Part> parts);
    Number part(const LineCommand::Part &part);
    void addCounted(std::size_t count, Instance &entries);
    void addListed(std::size_t count, Instance &entries);
    Number referenceTo(std::string_view text);
    Number newLine(std::string_view line);
    Word &word(std::string_view text);
    bool mayShare(std::size_t size);
    void setInstance(Index index, const Instance &entries, Kind kind);
    Number classReference(Kind kind);
    Index add(Number object);

    List &m_list;
    const PackedLines &m_lines;
    PackedLines::Reader m_reader;
    Forget m_forget;
    std::vector<Number> m_objects;
    std::map<std::string, Word, std::less<>> m_words;
    std::array<Number, 2> m_classes{};
    std::vector<Number> m_references;  // by the number of a line in the command
    std::size_t m_shareable = BinaryPropertyListWriter::kShareableText;
};

template <typename List>
Number LineArchive<List>::write(const std::string &name, std::span<const LineCommand::Part> parts) {
    m_objects.reserve(m_lines.count());
    m_references.reserve(m_lines.count());
    add(word(archive::kNull).number);
    const Number root = commandObject(name, parts);
    const Number rootKey = word(archive::kRoot).number;
    const Number top = m_list.addDictionary({&rootKey, 1}, {&root, 1});
    const std::array keys{word(archive::kVersion).number, word(archive::kArchiver).number,
                          word(archive::kTop).number, word(archive::kObjects).number};
    const std::array values{m_list.addInteger(archive::kVersionNumber),
                            word(archive::kArchiverName).number, top, m_list.addArray(m_objects)};
    return m_list.addDictionary(keys, values);
}

template <typename List>
Number LineArchive<List>::commandObject(const std::string &name,
                                        std::span<const LineCommand::Part> parts) {
    const Index index = add(0);
    Instance entries;
    entries.keys.push_back(referenceTo("command"));
    entries.values.push_back(referenceTo(name));
    for (const LineCommand::Part &entry : parts) {
        entries.keys.push_back(referenceTo(entry.key));
        entries.values.push_back(part(entry));
    }
    setInstance(index, entries, Kind::kCounted);
    return m_list.addReference(index);
}

template <typename List>
Number LineArchive<List>::part(const LineCommand::Part &part) {
    const Index index = add(0);
    Instance entries;
    entries.values.reserve(part.count);
    if (part.kind == Kind::kCounted) {
        addCounted(part.count, entries);
    } else {
        addListed(part.count, entries);
    }
    setInstance(index, entries, part.kind);
    return m_list.addReference(index);
}

template <typename List>
void LineArchive<List>::addCounted(std::size_t count, Instance &entries) {
    entries.keys.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const PackedLines::Place place = m_reader.next();
        m_forget(place);
        entries.keys.push_back(newLine(m_lines.line(place)));
        entries.values.push_back(referenceTo(std::to_string(m_lines.note(place))));
        m_references.push_back(entries.keys.back());
    }
}

template <typename List>
void LineArchive<List>::addListed(std::size_t count, Instance &entries) {
    for (std::size_t i = 0; i < count; ++i) {
        const PackedLines::Place place = m_reader.next();
        m_forget(place);
        const std::string_view line = m_lines.line(place);
        const std::uint32_t first = m_lines.note(place);
        const bool isNew = first == m_references.size();
        m_references.push_back(0);
        if (isNew || !mayShare(line.size())) {
            m_references[first] = newLine(line);
        }
        entries.values.push_back(m_references[first]);
    }
}

template <typename List>
Number LineArchive<List>::newLine(std::string_view line) {
    m_shareable += 2 * line.size();
    return m_list.addReference(add(m_list.addText(line)));
}

/// Of a text that stands among the objects.
template <typename List>
Number LineArchive<List>::referenceTo(std::string_view text) {
    Word &found = word(text);
    if (found.index == 0) {
        found.index = add(found.number);
        found.reference = m_list.addReference(found.index);
    }
    return found.reference;
}

template <typename List>
typename LineArchive<List>::Word &LineArchive<List>::word(std::string_view text) {
    const auto known = m_words.find(text);
    if (known != m_words.end() && mayShare(text.size())) {
        return known->second;
    }
    m_shareable += 2 * text.size();
    const Word made{.number = m_list.addText(text)};
    return m_words.insert_or_assign(std::string(text), made).first->second;
}

/// Whether a text that is there already is named once more instead of being written once more.
template <typename List>
bool LineArchive<List>::mayShare(std::size_t size) {
    if (2 * size > m_shareable) {
        return false;
    }
    m_shareable -= 2 * size;
    return true;
}

template <typename List>
void LineArchive<List>::setInstance(Index index, const Instance &entries, Kind kind) {
    Instance fields;
    if (kind == Kind::kCounted) {
        fields.values.push_back(m_list.addArray(entries.keys));
    }
    fields.values.push_back(m_list.addArray(entries.values));
    if (kind == Kind::kCounted) {
        fields.keys.push_back(word(archive::kCollectionKeys).number);
    }
    fields.keys.push_back(word(archive::kCollectionObjects).number);
    fields.keys.push_back(word(archive::kClass).number);
    fields.values.push_back(classReference(kind));
    m_objects[index] = m_list.addDictionary(fields.keys, fields.values);
}

template <typename List>
Number LineArchive<List>::classReference(Kind kind) {
    Number &reference = m_classes[static_cast<std::size_t>(kind)];
    if (reference == 0) {
        const std::array hierarchy{
            word(kind == Kind::kCounted ? archive::kDictionaryClass : archive::kArrayClass).number,
            word(archive::kObjectClass).number};
        const std::array keys{word(archive::kClassName).number, word(archive::kClasses).number};
        const std::array values{hierarchy.front(), m_list.addArray(hierarchy)};
        const Index index = add(0);
        m_objects[index] = m_list.addDictionary(keys, values);
        reference = m_list.addReference(index);
    }
    return reference;
}

template <typename List>
Index LineArchive<List>::add(Number object) {
    m_objects.push_back(object);
    return static_cast<Index>(m_objects.size() - 1);
}

}  // namespace

bool LineCommand::writeArchive(int fd) && {
    PropertyListCount count;
    LineArchive(count, m_lines, [](PackedLines::Place /*place*/) {}).write(m_name, m_parts);
    PropertyListStream list(fd, count.count());
    LineArchive archive(list, m_lines,
                        [this](PackedLines::Place place) { m_lines.forgetBefore(place); });
    return list.finish(archive.write(m_name, m_parts));
}

}  // namespace quorbel
