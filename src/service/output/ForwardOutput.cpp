#include "service/output/ForwardOutput.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace quorbel {

namespace {

/// Each one syncs.
constexpr std::chrono::seconds kAcknowledgeInterval{1};
constexpr std::chrono::milliseconds kLook{500};
constexpr std::chrono::seconds kFinish{2};
/// No more than that at a time, so that the socket of a server that keeps up can hold it.
constexpr std::uint64_t kBurst = 64;
constexpr std::chrono::milliseconds kBetweenBursts{1};
constexpr std::size_t kPiece = std::size_t{256} << 10U;

}  // namespace

ForwardOutput::ForwardOutput(LogStore &store, const std::filesystem::path &folder,
                             const ForwardSettings &settings, std::chrono::milliseconds proof)
    : Output(store, folder, "syslog", {settings.name, false, settings.history}),
      m_settings(settings),
      m_proof(proof) {}

void ForwardOutput::run() {
    while (!isStopping()) {
        measure();
        if (!m_connection && !connect()) {
            pause(isStopping() ? std::chrono::milliseconds(0) : patience());
        } else if (!turn()) {
            breakOff();
        }
    }
    if (m_connection) {
        finish();
    }
}

bool ForwardOutput::connect() {
    auto opened = ForwardConnection::open(m_settings, stopping());
    if (const auto *problem = std::get_if<std::string>(&opened)) {
        if (!isStopping()) {
            noteProblem(m_settings.server + " port " + std::to_string(m_settings.port) + ": " +
                        *problem);
        }
        return false;
    }
    m_connection = std::move(std::get<std::unique_ptr<ForwardConnection>>(opened));
    return true;
}

/// False when the connection is broken.
bool ForwardOutput::turn() {
    const auto piece = next(kPiece, kLook, m_connection->fd());
    // Whatever comes in between, the connection is known to live at this time only.
    const Clock::time_point alive = Clock::now();
    if (!m_connection->listen() || (piece && !sendPiece(*piece))) {
        return false;
    }
    noteConfirmed(alive);
    acknowledgeSome(alive, false);
    return true;
}

bool ForwardOutput::sendPiece(const EventFeed::Piece &piece) {
    std::uint64_t events = 0;
    if (isUdp() ? !sendDatagrams(piece, events) : !sendStream(piece, events)) {
        return false;
    }
    if (!m_isCut) {
        m_marks.push_back({piece.first + piece.count, m_connection->written(), events});
    }
    return true;
}

bool ForwardOutput::sendStream(const EventFeed::Piece &piece, std::uint64_t &events) {
    m_bytes.clear();
    forEachEvent(piece, [&](std::uint64_t /*number*/, const LogLine &line) {
        if (m_settings.filter.matches(line)) {
            m_message.appendCounted(line, m_bytes);
            ++events;
        }
    });
    return sendBytes(m_bytes);
}

bool ForwardOutput::sendDatagrams(const EventFeed::Piece &piece, std::uint64_t &events) {
    bool works = true;
    forEachEvent(piece, [&](std::uint64_t /*number*/, const LogLine &line) {
        if (works && !m_isCut && m_settings.filter.matches(line)) {
            m_bytes.clear();
            m_message.append(line, m_bytes);
            works = sendBytes(m_bytes);
            if (++events % kBurst == 0) {
                pause(kBetweenBursts);
            }
        }
    });
    return works;
}

bool ForwardOutput::sendBytes(std::string_view bytes) {
    auto sent = m_connection->send(bytes);
    while (sent == ForwardConnection::Sent::kBlocked) {
        noteProblem("The server takes nothing");
        measure();
        sent = m_connection->send(bytes);
    }
    m_isCut = m_isCut || sent == ForwardConnection::Sent::kStopped;
    return sent.has_value();
}

void ForwardOutput::noteConfirmed(Clock::time_point alive) {
    const std::uint64_t unconfirmed = isUdp() ? 0 : m_connection->unconfirmed();
    const std::uint64_t written = m_connection->written();
    for (Mark &mark : m_marks) {
        if (mark.confirmed == Clock::time_point::max() && unconfirmed <= written - mark.written) {
            mark.confirmed = isUdp() ? alive - m_proof : Clock::now();
        }
    }
}

/// Up to the last mark that is proved by a connection that lived at `alive`; with `all`, all are.
void ForwardOutput::acknowledgeSome(Clock::time_point alive, bool all) {
    if (m_marks.empty() || (!all && alive - m_acknowledged < kAcknowledgeInterval)) {
        return;
    }
    const auto end =
        all ? m_marks.end() : std::ranges::find_if(m_marks, [alive, this](const Mark &mark) {
            return mark.confirmed == Clock::time_point::max() || alive - mark.confirmed < m_proof;
        });
    if (end == m_marks.begin() || !acknowledge(std::prev(end)->number)) {
        return;
    }
    m_acknowledged = alive;
    for (auto mark = m_marks.begin(); mark != end; ++mark) {
        noteSent(mark->events);
    }
    m_marks.erase(m_marks.begin(), end);
    noteWorking();
}

/// A server that closes in order has read all.
void ForwardOutput::finish() {
    m_connection->finish();
    const Clock::time_point end = Clock::now() + kFinish;
    while (!isUdp() && m_connection->listen() && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    acknowledgeSome(Clock::now(), isUdp() || m_connection->isClosed());
}

void ForwardOutput::breakOff() {
    noteProblem(m_settings.server + " port " + std::to_string(m_settings.port) + ": " +
                m_connection->problem());
    m_connection.reset();
    m_marks.clear();
    feed().rewind();
    pause(patience());
}

}  // namespace quorbel
