#pragma once

#include "common/IpAddress.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace quorbel {

/// What a kernel hands over at once: one datagram, or several that came from one sender one after
/// the other.
struct DatagramRun {
    std::string_view bytes;
    /// Bytes of each of them but the last, which may have fewer; 0 when there is only one.
    std::size_t each = 0;
    bool cut = false;  ///< there were more bytes
    IpAddress sender;
    /// The kernel's count of what the socket had dropped when this came; nothing is 0.
    std::optional<std::uint32_t> drops;

    /// How many datagrams these are.
    [[nodiscard]] std::size_t count() const {
        return each == 0 ? 1 : (bytes.size() + each - 1) / each;
    }
    /// Calls `onDatagram(std::string_view bytes, bool cut)` for each, in their order.
    template <typename Handler>
    void forEach(const Handler &onDatagram) const {
        std::string_view rest = bytes;
        while (each != 0 && rest.size() > each) {
            onDatagram(rest.substr(0, each), false);
            rest.remove_prefix(each);
        }
        onDatagram(rest, cut);
    }
};

/// Reads many datagrams from a socket with one call, into buffers that are used again.
class DatagramBatch {
public:
    /// So many runs are read at once.
    static constexpr std::size_t kMostRuns = 64;

    DatagramBatch();
    ~DatagramBatch();
    DatagramBatch(const DatagramBatch &) = delete;
    DatagramBatch &operator=(const DatagramBatch &) = delete;

    /// Asks the kernel to join datagrams of the same length and to say with each run what it had
    /// dropped. A kernel that cannot goes on as it is. What such a socket holds can be read only by
    /// somebody who has asked for it, too.
    static void prepare(int socket);

    /// Returns how many runs are here now; does not wait for any.
    std::size_t fetch(int socket);
    /// Its bytes last until the next fetch(). Precondition: `index` is below what that returned.
    [[nodiscard]] DatagramRun run(std::size_t index) const;

private:
    struct Buffers;

    std::unique_ptr<Buffers> m_buffers;
    std::size_t m_count = 0;  ///< of runs that are there
};

}  // namespace quorbel
