#include "service/input/TcpInput.h"

#include "service/input/SenderAddress.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace quorbel {

namespace {

constexpr std::size_t kSlice = std::size_t{64} * 1024;
constexpr int kAcceptsPerTurn = 32;

}  // namespace

class TcpInput::Connection {
public:
    Connection(TcpInput &input, UniqueFd socket, std::string host)
        : m_input(input),
          m_socket(std::move(socket)),
          m_splitter(
              [&collector = input.m_collector, host = std::move(host)](
                  std::string_view frame, bool cut) { collector.receive(frame, host, cut); }) {}

    [[nodiscard]] TcpInput &input() const { return m_input; }
    [[nodiscard]] int fd() const { return m_socket.get(); }
    FrameSplitter &splitter() { return m_splitter; }

    /// Where the connection stands in its list, and what wakes it.
    void attach(Connections::iterator place, EventSourcePointer source) {
        m_place = place;
        m_source = std::move(source);
    }
    [[nodiscard]] Connections::iterator place() const { return m_place; }

private:
    TcpInput &m_input;
    UniqueFd m_socket;
    FrameSplitter m_splitter;
    Connections::iterator m_place;
    EventSourcePointer m_source;
};

TcpInput::TcpInput(sd_event *loop, UniqueFd listener, Collector &collector, Counters &counters)
    : m_loop(loop),
      m_listener(std::move(listener)),
      m_collector(collector),
      m_counters(counters),
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
    m_connections.emplace_back(*this, std::move(socket), addressText(address));
    const auto place = std::prev(m_connections.end());
    EventSourcePointer source = watchInput(m_loop, place->fd(), onReadable, &*place);
    if (source) {
        place->attach(place, std::move(source));
    } else {
        m_connections.erase(place);
    }
    return true;
}

int TcpInput::onReadable(sd_event_source * /*source*/, int /*fd*/, std::uint32_t /*events*/,
                         void *connection) {
    const auto *self = static_cast<Connection *>(connection);
    self->input().readSlice(self->place());
    return 0;
}

/// Reads what is there, up to a slice. The connection is gone when its other end has closed it, and
/// else stands behind all others when something came.
TcpInput::Slice TcpInput::readSlice(Connections::iterator connection) {
    const ssize_t count = ::read(connection->fd(), m_slice.data(), m_slice.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return Slice::kQuiet;
    }
    if (count <= 0) {
        close(connection);
        return Slice::kClosed;
    }
    m_collector.beginTurn();
    connection->splitter().feed({m_slice.data(), static_cast<std::size_t>(count)});
    m_collector.endTurn();
    m_connections.splice(m_connections.end(), m_connections, connection);
    return Slice::kRead;
}

void TcpInput::close(Connections::iterator connection) {
    m_collector.beginTurn();
    connection->splitter().finish();
    m_collector.endTurn();
    m_connections.erase(connection);
}

void TcpInput::closeIdlest() {
    close(m_connections.begin());
    ++m_counters.connectionsClosed;
}

void TcpInput::drain(std::chrono::steady_clock::time_point deadline) {
    m_source.reset();
    const auto isTime = [deadline] { return std::chrono::steady_clock::now() >= deadline; };
    while (!isTime() && acceptOne()) {
    }
    while (!m_connections.empty()) {
        const auto connection = m_connections.begin();
        if (isTime() || readSlice(connection) == Slice::kQuiet) {
            close(connection);
        }
    }
}

}  // namespace quorbel
