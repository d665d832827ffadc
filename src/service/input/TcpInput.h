#pragma once

#include "service/Collector.h"
#include "service/SdEvent.h"
#include "service/UniqueFd.h"
#include "service/input/FrameSplitter.h"
#include "service/input/StreamChannel.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

namespace quorbel {

/// Receives messages over stream connections (RFC 6587) and hands them to the collector.
///
/// Each connection is read one slice per turn of the loop, so that none keeps others waiting. At
/// most kMostConnections are open: a new one takes the place of the one that was idle longest, once
/// what has arrived over that is read. A connection that is not established after kLongestHandshake
/// is closed.
class TcpInput {
public:
    static constexpr std::size_t kMostConnections = 512;
    static constexpr std::chrono::seconds kLongestHandshake{10};

    /// `collector` and `counters` must outlive the object. `makeChannel` may give null.
    TcpInput(sd_event *loop, UniqueFd listener, Collector &collector, Counters &counters,
             ChannelMaker makeChannel = makePlainChannel);
    ~TcpInput();
    TcpInput(const TcpInput &) = delete;
    TcpInput &operator=(const TcpInput &) = delete;

    /// Accepts and reads what the kernel holds now, until `deadline` at the latest, and closes all
    /// connections. No new ones are taken after that. One line in the journal says how many still
    /// held something when the time was up.
    void drain(std::chrono::steady_clock::time_point deadline);

private:
    class Connection;
    using Connections = std::list<Connection>;

    bool acceptOne();
    void add(UniqueFd socket, std::string host);
    enum class Slice { kRead, kQuiet, kClosed };
    Slice readSlice(Connections::iterator connection);
    void close(Connections::iterator connection);
    void closeIdlest();
    [[nodiscard]] std::size_t countUnreadInBacklog() const;
    static int onConnect(sd_event_source *source, int fd, std::uint32_t events, void *self);
    static int onReady(sd_event_source *source, int fd, std::uint32_t events, void *connection);
    static int onHandshakeTime(sd_event_source *source, std::uint64_t time, void *connection);

    sd_event *m_loop;
    UniqueFd m_listener;
    Collector &m_collector;
    Counters &m_counters;
    ChannelMaker m_makeChannel;
    std::string m_slice;
    Connections m_connections;  ///< the one that was idle longest in front
    EventSourcePointer m_source;
};

}  // namespace quorbel
