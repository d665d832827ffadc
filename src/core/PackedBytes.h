#pragma once

#include "core/PageAllocator.h"
#include "core/TrigramFilter.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace quorbel {

/// The bytes of a chunk's messages.
using MessageBytes = std::vector<char, PageAllocator<char>>;

/// Bytes in the block format of LZ4 (github.com/lz4/lz4, doc/lz4_Block_format.md). Any thread.
class PackedBytes {
public:
    /// More are not packed: a few of those that were may stand unpacked beside.
    static constexpr std::size_t kMostBytes = std::size_t{4} << 20U;

    /// Nothing when packing is not worth it, or when there are too many.
    [[nodiscard]] static std::optional<PackedBytes> pack(const MessageBytes &bytes);
    /// In place of what `bytes` hold, in their memory when that is enough.
    void unpackInto(MessageBytes &bytes) const;

    /// Of the bytes that were packed.
    [[nodiscard]] std::size_t unpackedSize() const { return m_unpackedSize; }
    /// Of the bytes that were packed, of some thousandths of their size.
    [[nodiscard]] const TrigramFilter &filter() const { return m_filter; }

private:
    PackedBytes(std::vector<char> bytes, std::size_t unpackedSize, TrigramFilter filter);

    std::vector<char> m_bytes;
    std::size_t m_unpackedSize;
    TrigramFilter m_filter;
};

}  // namespace quorbel
