#include "service/input/TcpInput.h"

#include "service/base/Journal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>
#include <utility>

namespace quorbel {

namespace {

constexpr std::size_t kSlice = std::size_t{64} * 1024;
constexpr int kAcceptsPerTurn = 32;
constexpr std::chrono::milliseconds kAcceptPause{100};
// EPOLLIN and EPOLLOUT, without the header's untyped macros of the same names.
constexpr std::uint32_t kReadable = 1;
constexpr std::uint32_t kWritable = 4;

/// Whether messages have arrived that were not read.
bool isUnread(const StreamChannel &channel) {
    return channel.isEstablished() && heldByKernel(channel.fd()) > 0;
}

/// A part of what a stranger sent, for the journal.
std::string sampleOf(std::string_view text) {
    constexpr std::size_t kLongest = 40;
    std::string sample(text.substr(0, kLongest));
    std::ranges::replace_if(
        sample, [](char c) { return c < ' ' || c > '~'; }, '.');
    return '"' + sample + (text.size() > kLongest ? "..." : "") + '"';
}

}  // namespace

class TcpInput::Connection final : public ConnectionShares::Member {
public:
    Connection(TcpInput &input, std::unique_ptr<StreamChannel> channel, const IpAddress &sender)
        : m_input(input),
          m_channel(std::move(channel)),
          m_address(sender),
          m_splitter(
              [this](std::string_view frame, FrameSplitter::Kind kind) { receive(frame, kind); }) {}
    ~Connection() override {
        if (m_isShared) {
            m_input.m_shares.remove(m_share);
        }
    }

    [[nodiscard]] TcpInput &input() const { return m_input; }
    StreamChannel &channel() { return *m_channel; }

    void feed(std::string_view bytes) {
        m_splitter.feed(bytes);
        noteSkipped();
    }
    void finish() {
        m_splitter.finish();
        noteSkipped();
    }
    /// What another process had of the stream, if it was another's.
    void resume(std::string_view state) { m_splitter.resume(state); }
    [[nodiscard]] std::string state() const { return m_splitter.state(); }
    /// Something came.
    void touch() { m_input.m_shares.touch(m_share); }
    void makeRoom() override { m_input.makeRoom(m_place); }
    [[nodiscard]] const IpAddress &address() const { return m_address; }

    /// Where the connection stands in its list, and what wakes it.
    void attach(Connections::iterator place, EventSourcePointer source,
                EventSourcePointer handshakeEnd) {
        m_place = place;
        m_source = std::move(source);
        m_handshakeEnd = std::move(handshakeEnd);
        m_share = m_input.m_shares.add(ConnectionShares::hostOf(m_address), *this,
                                       ConnectionShares::Clock::now());
        m_isShared = true;
        if (m_channel->isEstablished()) {
            touch();
        }
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
            touch();
        }
    }

private:
    void receive(std::string_view frame, FrameSplitter::Kind kind) {
        if (kind == FrameSplitter::Kind::kStray) {
            ++m_input.m_counters.strayTexts;
            if (!std::exchange(m_saidStray, true)) {
                m_input.sayOdd("The stream from " + m_address.text() +
                               " is out of step. What stands between its frames is stored as "
                               "messages: " +
                               sampleOf(frame));
            }
        }
        m_input.m_collector.receive(frame, m_address, kind == FrameSplitter::Kind::kCut);
    }
    void noteSkipped() {
        const std::uint64_t skipped = m_splitter.skipped() - m_skipped;
        if (skipped > 0) {
            m_skipped += skipped;
            m_input.m_counters.bytesSkipped += skipped;
            m_input.m_collector.refusals().note(m_address, RefusalReason::kTooLong, {});
            if (!std::exchange(m_saidSkipped, true)) {
                m_input.sayOdd("A message from " + m_address.text() + " does not end within " +
                               std::to_string(FrameSplitter::kMaxFrame) +
                               " bytes. The rest of it is not stored");
            }
        }
    }

    TcpInput &m_input;
    std::unique_ptr<StreamChannel> m_channel;
    IpAddress m_address;
    FrameSplitter m_splitter;
    std::uint64_t m_skipped = 0;
    bool m_saidStray = false;
    bool m_saidSkipped = false;
    bool m_isShared = false;
    ConnectionShares::Place m_share;
    Connections::iterator m_place;
    StreamChannel::Next m_next = StreamChannel::Next::kReadable;
    EventSourcePointer m_source;
    EventSourcePointer m_handshakeEnd;
};

TcpInput::TcpInput(sd_event *loop, UniqueFd listener, Collector &collector, Counters &counters,
                   ConnectionShares &shares, ChannelMaker makeChannel)
    : m_loop(loop),
      m_listener(std::move(listener)),
      m_collector(collector),
      m_counters(counters),
      m_shares(shares),
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
        return errno == ECONNABORTED || errno == EINTR || recoverFrom(errno);
    }
    const IpAddress sender = IpAddress::of(address);
    leaveReserve(socket, sender);
    // Connections whose other end is gone without a word are noticed in the end.
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    add(std::move(socket), sender);
    return true;
}

/// Whether it is worth to try again at once after a connection could not be accepted.
bool TcpInput::recoverFrom(int error) {
    // Without a descriptor left the kernel does not even look whether somebody waits.
    pollfd waiting{m_listener.get(), POLLIN, 0};
    if (error == EAGAIN || ::poll(&waiting, 1, 0) != 1) {
        return false;
    }
    if (error == EMFILE) {
        if (auto *member = m_shares.toClose(std::nullopt, ConnectionShares::Clock::now())) {
            member->makeRoom();
            return true;
        }
    }
    if (m_source) {
        // The connection goes on waiting, and would wake the loop all the time.
        sd_event_source *timer = nullptr;
        sd_event_add_time_relative(m_loop, &timer, CLOCK_MONOTONIC,
                                   std::chrono::microseconds(kAcceptPause).count(), 0, onPauseEnd,
                                   this);
        m_pauseEnd.reset(timer);
        sd_event_source_set_enabled(m_source.get(), m_pauseEnd ? SD_EVENT_OFF : SD_EVENT_ON);
    }
    return false;
}

int TcpInput::onPauseEnd(sd_event_source * /*source*/, std::uint64_t /*time*/, void *self) {
    sd_event_source_set_enabled(static_cast<TcpInput *>(self)->m_source.get(), SD_EVENT_ON);
    return 0;
}

/// Keeps the descriptors free that are not for connections: the kernel always gives the lowest one,
/// so a new one that is too high says that all below are taken.
void TcpInput::leaveReserve(UniqueFd &socket, const IpAddress &sender) {
    // When there have become fewer, each new one brings that nearer.
    constexpr int kMostClosed = 4;
    for (int i = 0; i < kMostClosed && socket.get() >= ConnectionShares::descriptorLimit(); ++i) {
        auto *member =
            m_shares.toClose(ConnectionShares::hostOf(sender), ConnectionShares::Clock::now());
        if (member == nullptr) {
            return;
        }
        member->makeRoom();
        UniqueFd lower(::fcntl(socket.get(), F_DUPFD_CLOEXEC, 0));
        if (lower.isOpen() && lower.get() < socket.get()) {
            socket = std::move(lower);
        }
    }
}

void TcpInput::add(UniqueFd socket, const IpAddress &sender, std::string_view state) {
    auto channel = m_makeChannel(std::move(socket), sender.text());
    if (!channel) {
        return;
    }
    m_connections.emplace_back(*this, std::move(channel), sender);
    const auto place = std::prev(m_connections.end());
    place->resume(state);
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
        connection->feed({m_slice.data(), count});
        m_collector.endTurn();
        connection->touch();
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
    connection->finish();
    m_collector.endTurn();
    m_connections.erase(connection);
}

/// Reads what the kernel holds by now, and no more than that: the sender may be quicker.
void TcpInput::makeRoom(Connections::iterator connection) {
    // Unless there is less to read, a slice leaves no more room than for one TLS record.
    constexpr std::size_t kLeastSlice = kSlice - StreamChannel::kLeastRoom;
    std::size_t slices = heldByKernel(connection->channel().fd()) / kLeastSlice + 1;
    Slice last = Slice::kRead;
    for (; slices > 0 && last == Slice::kRead; --slices) {
        last = readSlice(connection);
    }
    if (last != Slice::kClosed) {
        ++m_counters.connectionsClosed;
        m_collector.refusals().note(connection->address(), RefusalReason::kClosed, {});
        m_counters.closedUnread += isUnread(connection->channel()) ? 1U : 0U;
        close(connection);
    }
}

/// Whoever sets up a sender wants to know what it does wrong, but nobody shall flood the journal.
void TcpInput::sayOdd(const std::string &text) {
    constexpr int kMost = 20;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_oddMinute >= std::chrono::minutes(1)) {
        m_oddMinute = now;
        m_oddSaid = 0;
    }
    if (m_oddSaid < kMost) {
        ++m_oddSaid;
        say(JournalLevel::kWarning, text);
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
    while (std::chrono::steady_clock::now() < deadline && acceptOne()) {
    }
    const std::size_t unread = countUnreadInBacklog();
    // Whoever comes now is to know that nobody takes anything.
    m_listener.reset();
    sayUnread(unread + endAll(deadline, nullptr));
}

void TcpInput::leave(std::chrono::steady_clock::time_point deadline, SocketKeeper *keeper) {
    m_source.reset();
    sayUnread(endAll(deadline, keeper));
}

/// Reads what the kernel holds by now, and gives all connections away, or closes them. How many
/// were closed with something in them, because it was time.
std::size_t TcpInput::endAll(std::chrono::steady_clock::time_point deadline, SocketKeeper *keeper) {
    std::size_t unread = 0;
    while (!m_connections.empty()) {
        const auto connection = m_connections.begin();
        const bool late = std::chrono::steady_clock::now() >= deadline;
        if (!late && readSlice(connection) != Slice::kQuiet) {
            continue;
        }
        StreamChannel &channel = connection->channel();
        if (keeper != nullptr && keeper->keepStream(channel.fd(), connection->state())) {
            m_connections.erase(connection);
        } else {
            unread += late && isUnread(channel) ? 1U : 0U;
            close(connection);
        }
    }
    return unread;
}

void TcpInput::sayUnread(std::size_t unread) {
    if (unread > 0) {
        m_counters.closedUnread += unread;
        say(JournalLevel::kWarning,
            "Connections that were closed before everything that had arrived was read: " +
                std::to_string(unread));
    }
}

void TcpInput::resume(PassedSockets::Stream stream) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    // The interface of sockets casts one address type to another.
    if (::getpeername(stream.socket.get(), reinterpret_cast<sockaddr *>(&address), &length) == 0) {
        add(std::move(stream.socket), IpAddress::of(address), stream.state);
    }
}

}  // namespace quorbel
