#include "platform/PackedLines.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace quorbel {

struct PackedLines::Head {
    std::uint32_t size;
    std::uint32_t note;
};

namespace {

// So that a place, which counts in these, fits in four bytes.
constexpr std::size_t kUnit = 8;

std::size_t inUnits(std::size_t bytes) {
    return (bytes + kUnit - 1) / kUnit * kUnit;
}

}  // namespace

PackedLines::PackedLines(PackedLines &&other) noexcept {
    *this = std::move(other);
}

PackedLines &PackedLines::operator=(PackedLines &&other) noexcept {
    std::swap(m_memory, other.m_memory);
    std::swap(m_room, other.m_room);
    std::swap(m_used, other.m_used);
    std::swap(m_forgotten, other.m_forgotten);
    std::swap(m_count, other.m_count);
    std::swap(m_textSize, other.m_textSize);
    return *this;
}

PackedLines::~PackedLines() {
    if (m_memory != nullptr) {
        ::munmap(m_memory, m_room);
    }
}

PackedLines::Place PackedLines::append(std::string_view line, std::uint32_t note) {
    const std::size_t size = inUnits(sizeof(Head) + line.size());
    if (m_used / kUnit > std::numeric_limits<Place>::max() ||
        line.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw std::bad_alloc();
    }
    if (size > m_room - m_used) {
        grow(m_used + size);
    }
    const auto place = static_cast<Place>(m_used / kUnit);
    new (m_memory + m_used) Head{static_cast<std::uint32_t>(line.size()), note};
    std::memcpy(m_memory + m_used + sizeof(Head), line.data(), line.size());
    m_used += size;
    ++m_count;
    m_textSize += line.size();
    return place;
}

/// Pages that were never written to cost nothing, and moving a mapping copies none of them.
void PackedLines::grow(std::size_t needed) {
    constexpr std::size_t kLeast = std::size_t{1} << 20U;
    const std::size_t room = std::max({needed + kLeast - needed % kLeast, kLeast, 2 * m_room});
    void *memory = m_memory == nullptr ? ::mmap(nullptr, room, PROT_READ | PROT_WRITE,
                                                MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                                       : ::mremap(m_memory, m_room, room, MREMAP_MAYMOVE);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    m_memory = static_cast<char *>(memory);
    m_room = room;
}

PackedLines::Head *PackedLines::head(Place place) const {
    return std::launder(reinterpret_cast<Head *>(m_memory + place * kUnit));
}

std::string_view PackedLines::line(Place place) const {
    return {m_memory + place * kUnit + sizeof(Head), head(place)->size};
}

std::uint32_t PackedLines::note(Place place) const {
    return head(place)->note;
}

void PackedLines::setNote(Place place, std::uint32_t note) {
    head(place)->note = note;
}

PackedLines::Place PackedLines::Reader::next() {
    const auto place = static_cast<Place>(m_next / kUnit);
    m_next += inUnits(sizeof(Head) + m_lines.head(place)->size);
    return place;
}

void PackedLines::forgetBefore(Place place) {
    constexpr std::size_t kAtATime = std::size_t{1} << 20U;
    const std::size_t end = place * kUnit / kAtATime * kAtATime;
    if (end > m_forgotten) {
        ::madvise(m_memory + m_forgotten, end - m_forgotten, MADV_DONTNEED);
        m_forgotten = end;
    }
}

}  // namespace quorbel
