#pragma once

#include <zlib.h>

#include <cstddef>
#include <string_view>

namespace quorbel {

/// Bytes in the gzip format (RFC 1952), packed at the least effort while they are read, so that who
/// gets them can begin at once.
class GzipReader {
public:
    /// `bytes` outlive the object. Throws std::bad_alloc.
    explicit GzipReader(std::string_view bytes);
    ~GzipReader();
    GzipReader(const GzipReader &) = delete;
    GzipReader &operator=(const GzipReader &) = delete;

    /// Writes the next ones, `size` at most, and returns how many; 0 at the end.
    std::size_t read(char *buffer, std::size_t size);
    /// Begins anew.
    void rewind();

private:
    const std::string_view m_bytes;
    z_stream m_stream{};
};

}  // namespace quorbel
