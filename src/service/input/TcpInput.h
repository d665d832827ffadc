#pragma once

#include "platform/UniqueFd.h"
#include "service/base/SdEvent.h"
#include "service/collect/Collector.h"
#include "service/input/ConnectionShares.h"
#include "service/input/FrameSplitter.h"
#include "service/input/PassedSockets.h"
#include "service/input/StreamChannel.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

namespace quorbel {

/// Receives messages over stream connections (RFC 6587) and hands them to the collector.
///
/// Each connection is read one slice per turn of the loop, so that none keeps others waiting. As
/// many are open as there are descriptors for; then a new one takes the place of one that
/// ConnectionShares finds, once what has arrived over that is read. A connection that is not
/// established after kLongestHandshake is closed. What is odd about a stream is said in the journal
/// once for a connection, and for twenty a minute.
class TcpInput {
public:
    static constexpr std::chrono::seconds kLongestHandshake{10};

    /// All must outlive the object. `makeChannel` may give null.
    TcpInput(sd_event *loop, UniqueFd listener, Collector &collector, Counters &counters,
             ConnectionShares &shares, ChannelMaker makeChannel = makePlainChannel);
    ~TcpInput();
    TcpInput(const TcpInput &) = delete;
    TcpInput &operator=(const TcpInput &) = delete;

    /// Accepts and reads what the kernel holds now, until `deadline` at the latest, and closes all
    /// connections. No new ones are taken after that. One line in the journal says how many still
    /// held something when the time was up.
    void drain(std::chrono::steady_clock::time_point deadline);
    /// For a listener that somebody else goes on holding: those that wait to be accepted go on
    /// waiting. Reads what the kernel holds now of the others, until `deadline` at the latest, and
    /// gives them to `keeper` for resume() of the next process. Closes those that it cannot take,
    /// all of them when it is null.
    void leave(std::chrono::steady_clock::time_point deadline, SocketKeeper *keeper);
    /// Goes on with a connection that another process has left.
    void resume(PassedSockets::Stream stream);

    /// -1 after drain().
    [[nodiscard]] int listener() const { return m_listener.get(); }
    /// 0 after drain().
    [[nodiscard]] std::uint16_t port() const { return boundPort(m_listener); }

private:
    class Connection;
    using Connections = std::list<Connection>;

    bool acceptOne();
    bool recoverFrom(int error);
    void leaveReserve(UniqueFd &socket, const IpAddress &sender);
    void add(UniqueFd socket, const IpAddress &sender, std::string_view state = {});
    std::size_t endAll(std::chrono::steady_clock::time_point deadline, SocketKeeper *keeper);
    void sayUnread(std::size_t unread);
    enum class Slice { kRead, kQuiet, kClosed };
    Slice readSlice(Connections::iterator connection);
    void close(Connections::iterator connection);
    void makeRoom(Connections::iterator connection);
    void sayOdd(const std::string &text);
    [[nodiscard]] std::size_t countUnreadInBacklog() const;
    static int onConnect(sd_event_source *source, int fd, std::uint32_t events, void *self);
    static int onPauseEnd(sd_event_source *source, std::uint64_t time, void *self);
    static int onReady(sd_event_source *source, int fd, std::uint32_t events, void *connection);
    static int onHandshakeTime(sd_event_source *source, std::uint64_t time, void *connection);

    sd_event *m_loop;
    UniqueFd m_listener;
    Collector &m_collector;
    Counters &m_counters;
    ConnectionShares &m_shares;
    ChannelMaker m_makeChannel;
    std::string m_slice;
    std::chrono::steady_clock::time_point m_oddMinute{};
    int m_oddSaid = 0;          ///< since then
    Connections m_connections;  ///< in which something came last at the end
    EventSourcePointer m_source;
    EventSourcePointer m_pauseEnd;  ///< until which nothing is accepted
};

}  // namespace quorbel
