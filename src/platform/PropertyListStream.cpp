#include "platform/PropertyListStream.h"

#include "platform/DescriptorIo.h"
#include "platform/PropertyListBytes.h"
#include "platform/Utf8.h"

namespace quorbel {

using namespace propertylist;

using Number = PropertyListStream::Number;

PropertyListStream::PropertyListStream(int fd, std::size_t objectCount)
    : m_fd(fd),
      m_objectCount(objectCount),
      m_numberSize(smallestSize(objectCount)),
      m_buffer(kMagic) {
    m_offsets.reserve(objectCount);
}

Number PropertyListStream::addInteger(std::int64_t value) {
    const Number number = began();
    appendInteger(m_buffer, static_cast<std::uint64_t>(value));
    return number;
}

Number PropertyListStream::addText(std::string_view text) {
    const Number number = began();
    const bool isAscii = asciiPrefixLength(text) == text.size();
    isAscii ? appendAsciiText(m_buffer, text) : appendWideText(m_buffer, text);
    return number;
}

Number PropertyListStream::addReference(Number number) {
    const Number reference = began();
    appendReference(m_buffer, number);
    return reference;
}

Number PropertyListStream::addArray(std::span<const Number> elements) {
    const Number number = began();
    appendArrayHead(m_buffer, elements.size());
    appendNumbers(elements);
    return number;
}

Number PropertyListStream::addDictionary(std::span<const Number> keys,
                                         std::span<const Number> values) {
    const Number number = began();
    appendDictionaryHead(m_buffer, keys.size());
    appendNumbers(keys);
    appendNumbers(values);
    return number;
}

Number PropertyListStream::began() {
    writeWhenFull();
    m_offsets.push_back(m_written + m_buffer.size());
    return static_cast<Number>(m_offsets.size() - 1);
}

void PropertyListStream::appendNumbers(std::span<const Number> numbers) {
    for (const Number number : numbers) {
        appendBigEndian(m_buffer, number, m_numberSize);
        writeWhenFull();
    }
}

void PropertyListStream::writeWhenFull() {
    constexpr std::size_t kFull = std::size_t{64} << 10U;
    if (m_buffer.size() >= kFull) {
        write();
    }
}

void PropertyListStream::write() {
    m_failed = m_failed || writeFully(m_fd, m_buffer) != m_buffer.size();
    m_written += m_buffer.size();
    m_buffer.clear();
}

bool PropertyListStream::finish(Number top) {
    const std::uint64_t table = m_written + m_buffer.size();
    const std::size_t offsetSize = smallestSize(table);
    for (const std::uint64_t offset : m_offsets) {
        appendBigEndian(m_buffer, offset, offsetSize);
        writeWhenFull();
    }
    appendTrailer(m_buffer, {offsetSize, m_numberSize, m_offsets.size(), top, table});
    write();
    return !m_failed && m_offsets.size() == m_objectCount;
}

}  // namespace quorbel
