#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace quorbel {

/// What stands in front of a counted message (RFC 6587): "LEN SP", without a leading zero and up to
/// kMostCounted. A byte order mark in front of it belongs to it.
struct FrameHeader {
    /// kIncomplete: only bytes that follow can decide.
    enum class Kind { kAbsent, kIncomplete, kComplete };

    /// A larger number is no count, or else a line of text could take much else with it.
    static constexpr std::size_t kMostCounted = std::size_t{1024} * 1024;
    /// So many bytes hold any header, and the priority behind it.
    static constexpr std::size_t kLongest = 32;

    Kind kind = Kind::kAbsent;
    std::size_t length = 0;
    std::size_t messageLength = 0;
};

/// The count that a text begins with, whatever follows.
FrameHeader readCount(std::string_view text);

/// The count that a text begins with when its message begins with a priority: "<", one to three
/// digits and ">", which the count covers. That is how whoever counts sends messages.
FrameHeader readHeader(std::string_view text);

/// Whether a priority stands at the beginning of a text; a byte order mark in front of it is none
/// of the text.
FrameHeader::Kind findPriority(std::string_view text);

/// The headers that a priority within a text can belong to, the longest first: "120 <13>" may as
/// well be the end of another text and "20 <13>".
struct HeadersBefore {
    struct Place {
        std::size_t at = 0;
        std::size_t messageLength = 0;
    };
    std::array<Place, 7> places{};
    std::size_t count = 0;
    std::size_t messageBegin = 0;
};

/// For the "<" at `at`, behind which findPriority() is complete. None of them begins before `from`.
HeadersBefore headersBefore(std::string_view text, std::size_t from, std::size_t at);

/// The first priority with a header in a text that begins with another message. `count` is 0 when
/// there is none, and more of the text need not be searched from its beginning then, but from
/// kLongest before its end.
HeadersBefore firstHeaderWithin(std::string_view text, std::size_t from = 0);

/// Whether so many messages with headers between them follow one another in a text. The first is
/// `length` long, which each sender may measure in bytes, in characters or in units of UTF-16.
bool leadsOn(std::string_view text, std::size_t length, int times);

}  // namespace quorbel
