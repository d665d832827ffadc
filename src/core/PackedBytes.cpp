#include "core/PackedBytes.h"

#include <lz4.h>
#include <lz4hc.h>

#include <stdexcept>
#include <utility>

namespace quorbel {

namespace {

/// Log messages become a seventh at 150 MB/s; higher levels gain a few hundredths of that for times
/// as much work. All unpack alike.
constexpr int kLevel = 4;
/// The part of the bytes that their filter may take: 256 bytes for a chunk of usual messages.
constexpr std::size_t kFilterPart = 800;

}  // namespace

PackedBytes::PackedBytes(std::vector<char> bytes, std::size_t unpackedSize, TrigramFilter filter)
    : m_bytes(std::move(bytes)), m_unpackedSize(unpackedSize), m_filter(std::move(filter)) {}

std::optional<PackedBytes> PackedBytes::pack(const MessageBytes &bytes) {
    // Where a quarter at least is not gained, looking at them is not worth unpacking.
    const std::size_t room = bytes.size() / 4 * 3;
    if (bytes.size() > kMostBytes || room == 0) {
        return std::nullopt;
    }
    MessageBytes packed(room);
    const int size = LZ4_compress_HC(bytes.data(), packed.data(), static_cast<int>(bytes.size()),
                                     static_cast<int>(room), kLevel);
    if (size <= 0) {
        return std::nullopt;
    }
    return PackedBytes({packed.begin(), packed.begin() + size}, bytes.size(),
                       TrigramFilter({bytes.data(), bytes.size()}, bytes.size() / kFilterPart));
}

void PackedBytes::unpackInto(MessageBytes &bytes) const {
    bytes.resize(m_unpackedSize);
    const int size =
        LZ4_decompress_safe(m_bytes.data(), bytes.data(), static_cast<int>(m_bytes.size()),
                            static_cast<int>(m_unpackedSize));
    if (size < 0 || static_cast<std::size_t>(size) != m_unpackedSize) {
        throw std::logic_error("packed messages are damaged");
    }
}

}  // namespace quorbel
