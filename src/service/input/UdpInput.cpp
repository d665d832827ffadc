#include "service/input/UdpInput.h"

#include "service/input/ListenSockets.h"

#include <linux/filter.h>
#include <linux/sock_diag.h>
#include <sys/uio.h>

namespace quorbel {

namespace {

constexpr std::size_t kBatch = 64;
constexpr int kBatchesPerTurn = 16;
constexpr std::size_t kLargestDatagram = 65536;

}  // namespace

struct UdpInput::Buffers {
    std::array<std::array<char, kLargestDatagram>, kBatch> bytes;
    std::array<iovec, kBatch> parts{};
    std::array<sockaddr_storage, kBatch> addresses{};
    std::array<mmsghdr, kBatch> headers{};

    Buffers() {
        for (std::size_t i = 0; i < kBatch; ++i) {
            parts[i] = {bytes[i].data(), bytes[i].size()};
            headers[i].msg_hdr.msg_iov = &parts[i];
            headers[i].msg_hdr.msg_iovlen = 1;
            headers[i].msg_hdr.msg_name = &addresses[i];
        }
    }
};

UdpInput::UdpInput(sd_event *loop, UniqueFd socket, Collector &collector)
    : m_socket(std::move(socket)),
      m_collector(collector),
      m_buffers(std::make_unique_for_overwrite<Buffers>()),
      m_source(required(watchInput(loop, m_socket.get(), onReadable, this))) {}

UdpInput::~UdpInput() = default;

int UdpInput::onReadable(sd_event_source * /*source*/, int /*fd*/, std::uint32_t /*events*/,
                         void *self) {
    static_cast<UdpInput *>(self)->readTurn();
    return 0;
}

/// Returns whether more may be waiting.
bool UdpInput::readTurn() {
    m_collector.beginTurn();
    bool more = true;
    for (int i = 0; i < kBatchesPerTurn && more; ++i) {
        more = readBatch();
    }
    m_collector.endTurn();
    return more;
}

bool UdpInput::readBatch() {
    const std::size_t count = fetchBatch();
    for (std::size_t i = 0; i < count; ++i) {
        m_collector.receive({m_buffers->bytes[i].data(), m_buffers->headers[i].msg_len},
                            IpAddress::of(m_buffers->addresses[i]));
    }
    return count == kBatch;
}

/// Returns how many datagrams are in the buffers now.
std::size_t UdpInput::fetchBatch() {
    for (mmsghdr &header : m_buffers->headers) {
        header.msg_hdr.msg_namelen = sizeof(sockaddr_storage);
    }
    // Errors that an earlier reply of somebody caused are reported here; the next call goes on.
    const int count =
        ::recvmmsg(m_socket.get(), m_buffers->headers.data(), kBatch, MSG_DONTWAIT, nullptr);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

void UdpInput::drain(std::chrono::steady_clock::time_point deadline) {
    m_source.reset();
    // From here on the kernel drops (and counts) what arrives: there is an end to what it holds.
    sock_filter dropAll{BPF_RET | BPF_K, 0, 0, 0};
    const sock_fprog program{1, &dropAll};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program);
    while (std::chrono::steady_clock::now() < deadline && readTurn()) {
    }
    while (const std::size_t left = fetchBatch()) {
        m_dropped += left;
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
        // The kernel's counter has 32 bits; the difference is right even when it wraps around.
        const std::uint32_t count = information[SK_MEMINFO_DROPS];
        m_dropped += count - m_lastDropCount;
        m_lastDropCount = count;
    }
}

}  // namespace quorbel
