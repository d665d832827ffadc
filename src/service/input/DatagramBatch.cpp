#include "service/input/DatagramBatch.h"

#include <netinet/in.h>
#include <netinet/udp.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace quorbel {

namespace {

/// As much as the kernel joins, and as the longest datagram has.
constexpr std::size_t kLargestRun = 65536;

template <typename Number>
Number numberIn(const cmsghdr &note) {
    Number number{};
    std::memcpy(&number, CMSG_DATA(&note), sizeof number);
    return number;
}

}  // namespace

struct DatagramBatch::Buffers {
    /// What the kernel says besides: the length of each datagram and the count of dropped ones.
    struct Notes {
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int)) * 2> bytes;
    };

    std::array<std::array<char, kLargestRun>, kMostRuns> bytes;
    std::array<Notes, kMostRuns> notes;
    std::array<iovec, kMostRuns> parts{};
    std::array<sockaddr_storage, kMostRuns> addresses;
    std::array<mmsghdr, kMostRuns> headers{};

    Buffers() {
        for (std::size_t i = 0; i < kMostRuns; ++i) {
            parts[i] = {bytes[i].data(), bytes[i].size()};
            headers[i].msg_hdr.msg_iov = &parts[i];
            headers[i].msg_hdr.msg_iovlen = 1;
            headers[i].msg_hdr.msg_name = &addresses[i];
            headers[i].msg_hdr.msg_control = notes[i].bytes.data();
        }
        makeReady(kMostRuns);
    }
    /// The kernel leaves behind how much it has used of the first so many.
    void makeReady(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            headers[i].msg_hdr.msg_namelen = sizeof(sockaddr_storage);
            headers[i].msg_hdr.msg_controllen = sizeof(Notes);
        }
    }
};

DatagramBatch::DatagramBatch() : m_buffers(std::make_unique_for_overwrite<Buffers>()) {}

DatagramBatch::~DatagramBatch() = default;

void DatagramBatch::prepare(int socket) {
    const int on = 1;
    ::setsockopt(socket, SOL_UDP, UDP_GRO, &on, sizeof on);
    ::setsockopt(socket, SOL_SOCKET, SO_RXQ_OVFL, &on, sizeof on);
}

std::size_t DatagramBatch::fetch(int socket) {
    m_buffers->makeReady(m_count);
    // Errors that an earlier reply of somebody caused are reported here; the next call goes on.
    const int count =
        ::recvmmsg(socket, m_buffers->headers.data(), kMostRuns, MSG_DONTWAIT, nullptr);
    m_count = static_cast<std::size_t>(std::max(count, 0));
    return m_count;
}

DatagramRun DatagramBatch::run(std::size_t index) const {
    mmsghdr &header = m_buffers->headers.at(index);
    msghdr &message = header.msg_hdr;
    DatagramRun run{{m_buffers->bytes.at(index).data(), header.msg_len},
                    0,
                    (message.msg_flags & MSG_TRUNC) != 0,
                    IpAddress::of(m_buffers->addresses.at(index)),
                    std::nullopt};
    for (cmsghdr *note = CMSG_FIRSTHDR(&message); note != nullptr;
         note = CMSG_NXTHDR(&message, note)) {
        if (note->cmsg_level == SOL_UDP && note->cmsg_type == UDP_GRO) {
            run.each = static_cast<std::size_t>(numberIn<int>(*note));
        } else if (note->cmsg_level == SOL_SOCKET && note->cmsg_type == SO_RXQ_OVFL) {
            run.drops = numberIn<std::uint32_t>(*note);
        }
    }
    return run;
}

}  // namespace quorbel
