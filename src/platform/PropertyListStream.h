#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Writes a binary property list while its objects are being named: the bytes are those that
/// BinaryPropertyListWriter makes of the same objects, but of each it only keeps where it stands.
///
/// Every add... operation makes a new object and returns the number by which containers name it;
/// what is equal is the caller's business.
class PropertyListStream {
public:
    using Number = std::uint32_t;

    /// To a descriptor that outlives this; for a list of exactly that many objects.
    PropertyListStream(int fd, std::size_t objectCount);

    Number addInteger(std::int64_t value);
    /// UTF-8; each malformed byte in it is written as U+FFFD.
    Number addText(std::string_view text);
    Number addReference(Number number);
    Number addArray(std::span<const Number> elements);
    /// As many keys as values.
    Number addDictionary(std::span<const Number> keys, std::span<const Number> values);

    /// Ends the list. False when not all of it could be written, or the objects were not as many as
    /// was said.
    [[nodiscard]] bool finish(Number top);

private:
    Number began();
    void appendNumbers(std::span<const Number> numbers);
    void writeWhenFull();
    void write();

    int m_fd;
    std::size_t m_objectCount;
    std::size_t m_numberSize;
    std::string m_buffer;
    std::uint64_t m_written = 0;  // before what is in the buffer
    bool m_failed = false;
    std::vector<std::uint64_t> m_offsets;
};

/// Counts the objects that a PropertyListStream has to be told of, by the same operations.
class PropertyListCount {
public:
    using Number = PropertyListStream::Number;

    Number addInteger(std::int64_t /*value*/) { return m_count++; }
    Number addText(std::string_view /*text*/) { return m_count++; }
    Number addReference(Number /*number*/) { return m_count++; }
    Number addArray(std::span<const Number> /*elements*/) { return m_count++; }
    Number addDictionary(std::span<const Number> /*keys*/, std::span<const Number> /*values*/) {
        return m_count++;
    }
    [[nodiscard]] std::size_t count() const { return m_count; }

private:
    Number m_count = 0;
};

}  // namespace quorbel
