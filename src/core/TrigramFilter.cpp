#include "core/TrigramFilter.h"

#include <array>
#include <bit>
#include <span>

namespace quorbel {

namespace {

constexpr unsigned kBits = 15;  // of a place in the largest filter
constexpr std::size_t kWordBits = 64;
constexpr std::size_t kMostWords = (std::size_t{1} << kBits) / kWordBits;
constexpr std::uint8_t kLeastLead = 0xC0;  // of the bytes that lead others in UTF-8

/// What stands for a byte and those that are alike.
std::uint32_t alike(char letter) {
    const auto byte = static_cast<std::uint8_t>(letter);
    if (byte >= '0' && byte <= '9') {
        return '0';
    }
    return byte >= 'A' && byte <= 'Z' ? byte + std::uint32_t{'a' - 'A'} : byte;
}

std::size_t placeOf(std::uint32_t three) {
    constexpr std::uint32_t kOdd = 0x9E3779B1U;
    return (three * kOdd) >> (32U - kBits);
}

/// Calls `visit(place)` for each three bytes, and for each two that begin as said, until it returns
/// false. Returns whether it never did.
template <typename Visit>
bool visitPlaces(std::string_view bytes, Visit visit) {
    std::uint32_t last = 0;  // in the upper bytes, the third one back the lowest
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        last = last >> 8U | alike(bytes[i]) << 16U;
        const std::uint32_t before = last >> 8U & 0xFFU;
        if ((i >= 2 && !visit(placeOf(last))) ||
            (i >= 1 && before >= kLeastLead && !visit(placeOf(last >> 8U)))) {
            return false;
        }
    }
    return true;
}

std::size_t bitsSet(std::span<const std::uint64_t> words) {
    std::size_t count = 0;
    for (const std::uint64_t word : words) {
        count += static_cast<std::size_t>(std::popcount(word));
    }
    return count;
}

/// Half of them, with the places of both halves.
std::span<std::uint64_t> fold(std::span<std::uint64_t> words) {
    const std::size_t half = words.size() / 2;
    for (std::size_t i = 0; i < half; ++i) {
        words[i] |= words[half + i];
    }
    return words.first(half);
}

}  // namespace

TrigramFilter::TrigramFilter(std::string_view bytes, std::size_t mostBytes) {
    std::array<std::uint64_t, kMostWords> places{};
    visitPlaces(bytes, [&places](std::size_t place) {
        places[place / kWordBits] |= std::uint64_t{1} << (place % kWordBits);
        return true;
    });
    // With a quarter of all places taken, one of a hundred texts of six letters passes in vain.
    std::span<std::uint64_t> words(places);
    while (words.size() > 1 &&
           (words.size_bytes() > mostBytes || bitsSet(words) < words.size() * kWordBits / 8)) {
        words = fold(words);
    }
    if (words.size_bytes() <= mostBytes && bitsSet(words) <= words.size() * kWordBits / 4 * 3) {
        m_words.assign(words.begin(), words.end());
    }
}

bool TrigramFilter::mayHave(std::string_view text) const {
    if (m_words.empty()) {
        return true;
    }
    return visitPlaces(text, [this](std::size_t place) {
        const std::size_t there = place % (m_words.size() * kWordBits);
        return (m_words[there / kWordBits] >> (there % kWordBits) & 1U) != 0;
    });
}

}  // namespace quorbel
