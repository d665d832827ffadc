#include "service/input/TcpInput.h"

#include "service/Journal.h"
#include "service/input/SenderAddress.h"

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <utility>

namespace quorbel {

namespace {

constexpr std::size_t kSlice = std::size_t{64} * 1024;
constexpr int kAcceptsPerTurn = 32;
// EPOLLIN and EPOLLOUT, without the header's untyped macros of the same names.
constexpr std::uint32_t kReadable = 1;
constexpr std::uint32_t kWritable = 4;

/// How many bytes have arrived and were not read.
std::size_t heldByKernel(int socket) {
    int count = 0;
    return ::ioctl(socket, FIONREAD, &count) < 0 ? 0 : static_cast<std::size_t>(count);
}

}  // namespace

class TcpInput::Connection {
public:
    Connection(TcpInput &input, std::unique_ptr<StreamChannel> channel, std::string host)
        : m_input(input),
          m_channel(std::move(channel)),
          m_splitter([&collector = input.m_collector, host = std::move(host)](
                         std::string_view frame, FrameSplitter::Kind kind) {
              collector.receive(frame, host, kind == FrameSplitter::Kind::kCut);
          }) {}

    [[nodiscard]] TcpInput &input() const { return m_input; }
    StreamChannel &channel() { return *m_channel; }
    FrameSplitter &splitter() { return m_splitter; }

    /// Where the connection stands in its list, and what wakes it.
    void attach(Connections::iterator place, EventSourcePointer source,
                EventSourcePointer handshakeEnd) {
        m_place = place;
        m_source = std::move(source);
        m_handshakeEnd = std::move(handshakeEnd);
    }
    [[nodiscard]] Connections::iterator place() const { return m_place; }

    /// Follows the channel: what it waits for, and whether it is established.
    void waitFor(StreamChannel::Next next) {
        if (m_next != next) {
            m_next = next;
            sd_event_source_set_io_events(
                m_source.get(), next == StreamChannel::Next::kWritable ? kWritable : kReadable);
        }
        if (m_handshakeEnd && m_channel->isEstablished()) {
            m_handshakeEnd.reset();
        }
    }

private:
    TcpInput &m_input;
    std::unique_ptr<StreamChannel> m_channel;
    FrameSplitter m_splitter;
    Connections::iterator m_place;
    StreamChannel::Next m_next = StreamChannel::Next::kReadable;
    EventSourcePointer m_source;
    EventSourcePointer m_handshakeEnd;
};

TcpInput::TcpInput(sd_event *loop, UniqueFd listener, Collector &collector, Counters &counters,
                   ChannelMaker makeChannel)
    : m_loop(loop),
      m_listener(std::move(listener)),
      m_collector(collector),
      m_counters(counters),
      m_makeChannel(std::move(makeChannel)),
      m_slice(kSlice, '\0'),
      m_source(required(watchInput(loop, m_listener.get(), onConnect, this))) {}

TcpInput::~TcpInput() = default;

int TcpInput::onConnect(sd_event_source * /*source*/, int /*fd*/, std::uint32_t /*events*/,
                        void *self) {
    auto *input = static_cast<TcpInput *>(self);
    for (int i = 0; i < kAcceptsPerTurn && input->acceptOne(); ++i) {
    }
    return 0;
}

/// Returns whether more may be waiting.
bool TcpInput::acceptOne() {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    UniqueFd socket(::accept4(m_listener.get(), reinterpret_cast<sockaddr *>(&address), &length,
                              SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket.isOpen()) {
        if ((errno == EMFILE || errno == ENFILE) && !m_connections.empty()) {
            closeIdlest();
            return true;
        }
        return errno == ECONNABORTED || errno == EINTR;
    }
    if (m_connections.size() >= kMostConnections) {
        closeIdlest();
    }
    // Connections whose other end is gone without a word are noticed in the end.
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    add(std::move(socket), addressText(address));
    return true;
}

void TcpInput::add(UniqueFd socket, std::string host) {
    auto channel = m_makeChannel(std::move(socket), host);
    if (!channel) {
        return;
    }
    m_connections.emplace_back(*this, std::move(channel), std::move(host));
    const auto place = std::prev(m_connections.end());
    EventSourcePointer source = watchInput(m_loop, place->channel().fd(), onReady, &*place);
    EventSourcePointer handshakeEnd;
    if (!place->channel().isEstablished()) {
        sd_event_source *timer = nullptr;
        sd_event_add_time_relative(m_loop, &timer, CLOCK_MONOTONIC,
                                   std::chrono::microseconds(kLongestHandshake).count(), 0,
                                   onHandshakeTime, &*place);
        handshakeEnd.reset(timer);
    }
    if (source && (handshakeEnd || place->channel().isEstablished())) {
        place->attach(place, std::move(source), std::move(handshakeEnd));
    } else {
        m_connections.erase(place);
    }
}

int TcpInput::onReady(sd_event_source * /*source*/, int /*fd*/, std::uint32_t /*events*/,
                      void *connection) {
    const auto *self = static_cast<Connection *>(connection);
    self->input().readSlice(self->place());
    return 0;
}

int TcpInput::onHandshakeTime(sd_event_source * /*source*/, std::uint64_t /*time*/,
                              void *connection) {
    const auto *self = static_cast<Connection *>(connection);
    self->input().close(self->place());
    return 0;
}

/// Reads what is there, up to a slice. The connection is gone when its other end has closed it, and
/// else stands behind all others when something came.
TcpInput::Slice TcpInput::readSlice(Connections::iterator connection) {
    const auto [count, next] = connection->channel().read(m_slice.data(), m_slice.size());
    if (count > 0) {
        m_collector.beginTurn();
        connection->splitter().feed({m_slice.data(), count});
        m_collector.endTurn();
        m_connections.splice(m_connections.end(), m_connections, connection);
    }
    if (next == StreamChannel::Next::kNothing) {
        close(connection);
        return Slice::kClosed;
    }
    connection->waitFor(next);
    return count > 0 ? Slice::kRead : Slice::kQuiet;
}

void TcpInput::close(Connections::iterator connection) {
    m_collector.beginTurn();
    connection->splitter().finish();
    m_collector.endTurn();
    m_connections.erase(connection);
}

/// Reads what the kernel holds by now, and no more than that: the sender may be quicker.
void TcpInput::closeIdlest() {
    const auto connection = m_connections.begin();
    // Unless there is less to read, a slice leaves no more room than for one TLS record.
    constexpr std::size_t kLeastSlice = kSlice - StreamChannel::kLeastRoom;
    std::size_t slices = heldByKernel(connection->channel().fd()) / kLeastSlice + 1;
    Slice last = Slice::kRead;
    for (; slices > 0 && last == Slice::kRead; --slices) {
        last = readSlice(connection);
    }
    if (last != Slice::kClosed) {
        close(connection);
        ++m_counters.connectionsClosed;
    }
}

/// How many of those that there was no time to take on have sent something.
std::size_t TcpInput::countUnreadInBacklog() const {
    std::size_t count = 0;
    for (int i = 0; i < SOMAXCONN; ++i) {
        const UniqueFd socket(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!socket.isOpen()) {
            break;
        }
        count += heldByKernel(socket.get()) > 0 ? 1U : 0U;
    }
    return count;
}

void TcpInput::drain(std::chrono::steady_clock::time_point deadline) {
    m_source.reset();
    const auto isTime = [deadline] { return std::chrono::steady_clock::now() >= deadline; };
    while (!isTime() && acceptOne()) {
    }
    std::size_t unread = countUnreadInBacklog();
    // Whoever comes now is to know that nobody takes anything.
    m_listener.reset();
    while (!m_connections.empty()) {
        const auto connection = m_connections.begin();
        const bool late = isTime();
        if (late && connection->channel().isEstablished() &&
            heldByKernel(connection->channel().fd()) > 0) {
            ++unread;
        }
        if (late || readSlice(connection) == Slice::kQuiet) {
            close(connection);
        }
    }
    if (unread > 0) {
        say(JournalLevel::kWarning,
            "Connections that were closed before all that had arrived was read: " +
                std::to_string(unread));
    }
}

}  // namespace quorbel
