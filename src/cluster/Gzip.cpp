#include "cluster/Gzip.h"

#include <zlib.h>

#include <limits>

namespace quorbel {

namespace {

constexpr int kGzip = 16;  // added to the window's bits: with gzip's head and tail
constexpr int kUsualMemory = 8;

bool pack(z_stream &stream, std::string_view bytes, std::string &packed) {
    packed.resize(deflateBound(&stream, bytes.size()));
    // zlib takes what it only reads as not constant.
    stream.next_in = const_cast<Bytef *>(reinterpret_cast<const Bytef *>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const bool isDone = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    packed.resize(stream.total_out);
    return isDone;
}

}  // namespace

std::optional<std::string> gzipped(std::string_view bytes) {
    z_stream stream{};
    if (bytes.size() > std::numeric_limits<uInt>::max() / 2 ||
        deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, MAX_WBITS + kGzip, kUsualMemory,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        return std::nullopt;
    }
    std::string packed;
    const bool isDone = pack(stream, bytes, packed);
    deflateEnd(&stream);
    return isDone ? std::optional(std::move(packed)) : std::nullopt;
}

}  // namespace quorbel
