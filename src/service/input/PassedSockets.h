#pragma once

#include "platform/UniqueFd.h"
#include "service/input/ListenSockets.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What the service manager had for this process when it started it: listeners that it holds open
/// for the unit, and what the process before had given into its keeping (SocketKeeper).
struct PassedSockets {
    /// A connection in the middle of its stream; `state` is what SocketKeeper::keepStream() was
    /// given.
    struct Stream {
        UniqueFd socket;
        std::string state;
    };

    std::optional<ListenSockets> plain;  ///< which the manager goes on holding, used or not
    UniqueFd tls;                        ///< not open when none was kept
    std::vector<Stream> streams;
    std::optional<std::uint32_t> udpDrops;  ///< as SocketKeeper::finish() was given

    /// Takes all of it, without blocking mode; a second call finds nothing. What was kept belongs
    /// to this process alone from then on. One of `plain` without the other is opened anew.
    static PassedSockets take();
};

/// Gives sockets into the manager's keeping, so that the next process goes on with them. The
/// manager closes them when it starts none.
class SocketKeeper {
public:
    /// Of so many connections; the unit's FileDescriptorStoreMax= has room for a few more. Each has
    /// its name in an environment variable of the next process, which is not endless.
    static constexpr std::size_t kMostStreams = 4096;

    /// False when that cannot be; the connection is the caller's as before. When it is true, the
    /// caller closes its own descriptor and reads no more.
    bool keepStream(int socket, std::string_view state);
    bool keepTls(int listener);
    /// Once, at the end. Returns when the manager has everything, or after some seconds.
    void finish(std::uint32_t udpDrops);

private:
    std::size_t m_streams = 0;
    std::string m_states;
};

}  // namespace quorbel
