#include "reports/TextTable.h"

#include <algorithm>
#include <cstring>

namespace quorbel {

namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20U;
constexpr unsigned kBlockShift = 32;
constexpr std::size_t kMostLengthBytes = 10;
constexpr unsigned kLengthBits = 7;  // of the length in each byte in front of a text
constexpr unsigned kMoreFollows = 0x80;

}  // namespace

char *TextStore::roomFor(std::size_t bytes) {
    if (m_size - m_used < bytes) {
        m_size = std::max(bytes, kBlockSize);
        m_used = 0;
        // Without initialising it: a page is touched when a text comes.
        m_blocks.emplace_back(new char[m_size]);
    }
    return m_blocks.back().get() + m_used;
}

TextStore::Ref TextStore::add(std::string_view text) {
    char *const begin = roomFor(kMostLengthBytes + text.size());
    const Ref ref = (m_blocks.size() - 1) << kBlockShift | m_used;
    char *at = begin;
    std::size_t length = text.size();
    for (; length >= kMoreFollows; length >>= kLengthBits) {
        *at++ = static_cast<char>(length | kMoreFollows);
    }
    *at++ = static_cast<char>(length);
    std::memcpy(at, text.data(), text.size());
    m_used += static_cast<std::size_t>(at - begin) + text.size();
    return ref;
}

std::string_view TextStore::text(Ref ref) const {
    const char *at = m_blocks[ref >> kBlockShift].get() + static_cast<std::uint32_t>(ref);
    std::size_t length = 0;
    unsigned shift = 0;
    for (;; shift += kLengthBits) {
        const auto byte = static_cast<unsigned char>(*at++);
        length |= static_cast<std::size_t>(byte & ~kMoreFollows) << shift;
        if ((byte & kMoreFollows) == 0) {
            return {at, length};
        }
    }
}

std::uint32_t TextTable::number(std::size_t hash, std::string_view text) {
    if (const auto known =
            m_index.find(hash, [this, text](std::uint32_t n) { return this->text(n) == text; })) {
        return *known;
    }
    const auto number = static_cast<std::uint32_t>(m_refs.size());
    m_refs.push_back(m_store.add(text));
    m_index.insert(hash, number);
    return number;
}

void TextTable::close() {
    m_index.clear();
    m_refs.shrink_to_fit();
}

}  // namespace quorbel
