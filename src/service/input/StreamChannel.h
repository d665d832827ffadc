#pragma once

#include "platform/UniqueFd.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace quorbel {

/// The bytes of one stream connection, as its other end means them. Nothing here waits.
class StreamChannel {
public:
    /// What has to happen before there can be more to read.
    enum class Next { kReadable, kWritable, kNothing };
    struct Read {
        std::size_t count = 0;
        Next next = Next::kReadable;  ///< of the socket; kNothing: there will be no more
    };

    static constexpr std::size_t kLeastRoom = std::size_t{16} * 1024;  ///< the largest TLS record

    StreamChannel() = default;
    virtual ~StreamChannel() = default;
    StreamChannel(const StreamChannel &) = delete;
    StreamChannel &operator=(const StreamChannel &) = delete;

    [[nodiscard]] virtual int fd() const = 0;
    /// Reads as much as is there, up to `room` bytes, which are at least kLeastRoom.
    virtual Read read(char *buffer, std::size_t room) = 0;
    /// Whether both ends have agreed on how to talk. Bytes come only then.
    [[nodiscard]] virtual bool isEstablished() const = 0;
};

/// How many bytes of a socket have arrived and were not read.
std::size_t heldByKernel(int socket);

/// Makes the channel of a connection that was accepted from `host`.
using ChannelMaker =
    std::function<std::unique_ptr<StreamChannel>(UniqueFd socket, const std::string &host)>;

/// The bytes as they stand.
std::unique_ptr<StreamChannel> makePlainChannel(UniqueFd socket, const std::string &host);

}  // namespace quorbel
