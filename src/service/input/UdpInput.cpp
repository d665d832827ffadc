#include "service/input/UdpInput.h"

#include "service/input/ListenSockets.h"

#include <linux/filter.h>
#include <linux/sock_diag.h>

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

/// After so many, others have their turn.
constexpr std::size_t kMostInTurn = 1024;

}  // namespace

UdpInput::UdpInput(sd_event *loop, UniqueFd socket, Collector &collector)
    : m_socket(std::move(socket)),
      m_collector(collector),
      m_source(std::make_unique<PacedSource>(loop, m_socket.get(),
                                             [this] { return readTurn().count; })) {
    DatagramBatch::prepare(m_socket.get());
}

UdpInput::Turn UdpInput::readTurn() {
    Turn turn;
    m_collector.beginTurn();
    while (turn.count < kMostInTurn && turn.more) {
        const std::size_t runs = m_batch.fetch(m_socket.get());
        for (std::size_t i = 0; i < runs; ++i) {
            turn.count += receive(m_batch.run(i));
        }
        turn.more = runs == DatagramBatch::kMostRuns;
    }
    m_collector.endTurn();
    return turn;
}

/// Returns how many datagrams it held.
std::size_t UdpInput::receive(const DatagramRun &run) {
    run.forEach(
        [&](std::string_view message, bool cut) { m_collector.receive(message, run.sender, cut); });
    return count(run);
}

/// Returns how many datagrams it holds, and counts those that the kernel dropped in front of it.
std::size_t UdpInput::count(const DatagramRun &run) {
    const std::size_t count = run.count();
    if (run.drops) {
        countDrops(*run.drops, std::max(m_lastRun, count));
    }
    m_lastRun = count;
    return count;
}

void UdpInput::drain(std::chrono::steady_clock::time_point deadline) {
    m_source.reset();
    // From here on the kernel drops (and counts) what arrives: there is an end to what it holds.
    sock_filter dropAll{BPF_RET | BPF_K, 0, 0, 0};
    const sock_fprog program{1, &dropAll};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program);
    while (std::chrono::steady_clock::now() < deadline && readTurn().more) {
    }
    while (const std::size_t left = m_batch.fetch(m_socket.get())) {
        for (std::size_t i = 0; i < left; ++i) {
            m_dropped += count(m_batch.run(i));
        }
    }
}

std::uint32_t UdpInput::leave() {
    m_source.reset();
    noteDrops();
    return m_lastDropCount;
}

void UdpInput::resume(std::optional<std::uint32_t> drops) {
    noteDrops();
    m_dropped = 0;
    m_lastDropCount = drops.value_or(m_lastDropCount);
}

std::uint64_t UdpInput::dropped() {
    noteDrops();
    return m_dropped;
}

std::uint16_t UdpInput::port() const {
    return boundPort(m_socket);
}

void UdpInput::noteDrops() {
    std::array<std::uint32_t, SK_MEMINFO_VARS> information{};
    socklen_t length = sizeof information;
    if (::getsockopt(m_socket.get(), SOL_SOCKET, SO_MEMINFO, information.data(), &length) == 0) {
        countDrops(information[SK_MEMINFO_DROPS], m_lastRun);
    }
}

/// The kernel has dropped `count` runs so far. How many datagrams each of those since the last call
/// held, it does not say: as many as those beside them, `each`.
void UdpInput::countDrops(std::uint32_t count, std::size_t each) {
    // The counter has 32 bits; the difference is right even when it wraps around. What a run says
    // may be older than what is known.
    const std::uint32_t more = count - m_lastDropCount;
    if (more <= INT32_MAX) {
        m_dropped += more * each;
        m_lastDropCount = count;
    }
}

}  // namespace quorbel
