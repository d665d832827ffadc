#pragma once

#include "platform/UniqueFd.h"
#include "service/base/SdEvent.h"
#include "service/collect/Collector.h"
#include "service/input/DatagramBatch.h"
#include "service/input/PacedSource.h"

#include <sys/socket.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace quorbel {

/// Receives messages as datagrams (RFC 5426) and hands them to the collector.
class UdpInput {
public:
    /// `collector` must outlive the object.
    UdpInput(sd_event *loop, UniqueFd socket, Collector &collector);
    UdpInput(const UdpInput &) = delete;
    UdpInput &operator=(const UdpInput &) = delete;

    /// Reads what the kernel holds now, until `deadline` at the latest, and nothing after that.
    /// What is left then counts as dropped.
    void drain(std::chrono::steady_clock::time_point deadline);
    /// For a socket that somebody else goes on holding: reads nothing any more. Returns the
    /// kernel's count of what it has dropped, for resume() of the next process.
    std::uint32_t leave();
    /// For a socket that somebody else has read: what was dropped before counts only from
    /// `drops` on. Without it, nobody knows since when, and only what comes counts.
    void resume(std::optional<std::uint32_t> drops);
    /// How many datagrams were dropped so far: because the kernel's buffer was full, or by drain().
    /// Of datagrams that the kernel had joined it says only how many such runs it dropped; each
    /// counts as many as the ones that were read beside it held.
    [[nodiscard]] std::uint64_t dropped();
    [[nodiscard]] std::uint16_t port() const;

private:
    struct Turn {
        std::size_t count = 0;  ///< of datagrams
        bool more = true;       ///< may be waiting
    };
    Turn readTurn();
    std::size_t receive(const DatagramRun &run);
    std::size_t count(const DatagramRun &run);
    void noteDrops();
    void countDrops(std::uint32_t count, std::size_t each);

    UniqueFd m_socket;
    Collector &m_collector;
    DatagramBatch m_batch;
    std::size_t m_lastRun = 1;  ///< how many datagrams the last one held
    std::uint32_t m_lastDropCount = 0;
    std::uint64_t m_dropped = 0;
    std::unique_ptr<PacedSource> m_source;  ///< none when nothing is read any more
};

}  // namespace quorbel
