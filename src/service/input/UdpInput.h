#pragma once

#include "platform/UniqueFd.h"
#include "service/base/SdEvent.h"
#include "service/collect/Collector.h"

#include <sys/socket.h>

#include <array>
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
    ~UdpInput();
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
    [[nodiscard]] std::uint64_t dropped();
    [[nodiscard]] std::uint16_t port() const;

private:
    struct Buffers;

    bool readTurn();
    bool readBatch();
    std::size_t fetchBatch();
    void noteDrops();
    static int onReadable(sd_event_source *source, int fd, std::uint32_t events, void *self);

    UniqueFd m_socket;
    Collector &m_collector;
    std::unique_ptr<Buffers> m_buffers;
    std::uint32_t m_lastDropCount = 0;
    std::uint64_t m_dropped = 0;
    EventSourcePointer m_source;
};

}  // namespace quorbel
