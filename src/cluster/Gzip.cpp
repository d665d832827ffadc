#include "cluster/Gzip.h"

#include <algorithm>
#include <limits>
#include <new>

namespace quorbel {

namespace {

constexpr int kGzip = 16;  // added to the window's bits: with gzip's head and tail
constexpr int kUsualMemory = 8;

}  // namespace

GzipReader::GzipReader(std::string_view bytes) : m_bytes(bytes) {
    if (deflateInit2(&m_stream, Z_BEST_SPEED, Z_DEFLATED, MAX_WBITS + kGzip, kUsualMemory,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
}

GzipReader::~GzipReader() {
    deflateEnd(&m_stream);
}

std::size_t GzipReader::read(char *buffer, std::size_t size) {
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    const std::size_t left = m_bytes.size() - m_stream.total_in;
    // zlib takes what it only reads as not constant.
    m_stream.next_in =
        const_cast<Bytef *>(reinterpret_cast<const Bytef *>(m_bytes.data() + m_stream.total_in));
    m_stream.avail_in = static_cast<uInt>(std::min(left, kMost));
    m_stream.next_out = reinterpret_cast<Bytef *>(buffer);
    m_stream.avail_out = static_cast<uInt>(std::min(size, kMost));
    const uLong before = m_stream.total_out;
    deflate(&m_stream, left > kMost ? Z_NO_FLUSH : Z_FINISH);
    return m_stream.total_out - before;
}

void GzipReader::rewind() {
    deflateReset(&m_stream);
}

}  // namespace quorbel
