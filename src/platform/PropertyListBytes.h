#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// How the objects of a binary property list ("bplist00") are written, for those who write one.
namespace quorbel::propertylist {

inline constexpr std::string_view kMagic = "bplist00";
inline constexpr std::size_t kTrailerSize = 32;

/// How many bytes an offset or an object's number takes so that this one fits in: 1, 2, 4 or 8.
std::size_t smallestSize(std::uint64_t number);

/// At most eight bytes, most significant first.
void appendBigEndian(std::string &output, std::uint64_t number, std::size_t size);
/// Of a signed integer the bits.
void appendInteger(std::string &output, std::uint64_t bits);
/// The number of an object in a keyed archive ("UID").
void appendReference(std::string &output, std::uint64_t number);
void appendAsciiText(std::string &output, std::string_view text);
/// From UTF-8; each malformed byte in it is written as U+FFFD.
void appendWideText(std::string &output, std::string_view text);
void appendData(std::string &output, std::string_view bytes);
/// What an array or a dictionary begins with; the numbers of its elements follow, or those of as
/// many keys and then of its values.
void appendArrayHead(std::string &output, std::size_t count);
void appendDictionaryHead(std::string &output, std::size_t count);

/// The end of a list, behind the table of offsets.
struct Trailer {
    std::size_t offsetSize;
    std::size_t numberSize;
    std::size_t objectCount;
    std::uint64_t top;    ///< the number of the root
    std::uint64_t table;  ///< the offset of the table
};
void appendTrailer(std::string &output, const Trailer &trailer);

}  // namespace quorbel::propertylist
