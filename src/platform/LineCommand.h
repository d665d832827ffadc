#pragma once

#include "platform/PackedLines.h"
#include "platform/Value.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// A command that may consist of millions of lines, in about the memory that their bytes take:
/// "command" is its name, and each of its other keys stands for lines, as a dictionary from a line
/// to how often it is there, in decimal digits, or as an array of lines. Each ends with a line
/// feed.
class LineCommand {
public:
    using Place = PackedLines::Place;

    enum class Kind { kCounted, kListed };
    struct Part {
        std::string key;
        Kind kind;
        std::size_t count;  ///< of its lines, in their order
    };

    // Not an aggregate: a dictionary's braces must not mean one of these.
    LineCommand() = default;
    void setName(std::string name) { m_name = std::move(name); }

    /// What is added from now on stands under that key.
    void begin(std::string key, Kind kind);
    /// A line that was not added before, to no part. Equal ones are for the caller to find.
    Place add(std::string_view line);
    /// Once more a line that was added; where lines are counted, to this part.
    void again(Place place);
    /// Valid until a line is added.
    [[nodiscard]] std::string_view line(Place place) const { return m_lines.line(place); }

    /// The bytes of all lines.
    [[nodiscard]] std::size_t textSize() const { return m_lines.textSize(); }
    [[nodiscard]] Dictionary toDictionary() const;

    /// Writes the command as a keyed archive, byte for byte what writeKeyedArchive() makes of
    /// toDictionary(), and gives up the lines meanwhile. False when it could not be written.
    [[nodiscard]] bool writeArchive(int fd) &&;

private:
    std::string m_name;
    std::vector<Part> m_parts;
    // The notes are how often a line is there where lines are counted, and elsewhere which line of
    // the command, from 0, was the first that is equal to it.
    PackedLines m_lines;
};

}  // namespace quorbel
