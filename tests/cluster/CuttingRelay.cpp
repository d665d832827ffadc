#include "cluster/CuttingRelay.h"

#include "support/LoopbackPorts.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace quorbel::testing {

CuttingRelay::CuttingRelay(std::uint16_t server)
    : m_server(server),
      m_listener(listenOn(0)),
      m_stop(eventfd(0, EFD_CLOEXEC)),
      m_port(portOf(m_listener)),
      m_thread([this] { serve(); }) {}

CuttingRelay::~CuttingRelay() {
    eventfd_write(m_stop.get(), 1);
    m_thread.join();
}

void CuttingRelay::serve() {
    while (true) {
        std::array<pollfd, 2> wanted{{{m_listener.get(), POLLIN, 0}, {m_stop.get(), POLLIN, 0}}};
        poll(wanted.data(), wanted.size(), -1);
        if (wanted[1].revents != 0) {
            return;
        }
        const UniqueFd client(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        const UniqueFd server = connectTo(m_server);
        if (server.isOpen()) {
            pass(client.get(), server.get());
        }
    }
}

/// Until one of them ends it, or it is cut.
void CuttingRelay::pass(int client, int server) {
    std::int64_t left = -1;
    std::array<char, 16384> bytes{};
    std::array<pollfd, 3> wanted{
        {{client, POLLIN, 0}, {server, POLLIN, 0}, {m_stop.get(), POLLIN, 0}}};
    while (poll(wanted.data(), wanted.size(), -1) > 0 && wanted[2].revents == 0) {
        const bool isAnswer = wanted[1].revents != 0;
        left = left < 0 ? m_left.exchange(-1) : left;
        const bool isToBeCut = left >= 0;
        if (isToBeCut && (isAnswer || left == 0)) {
            ++m_cuts;
            return;
        }
        const auto most = static_cast<std::int64_t>(bytes.size());
        const auto wish = static_cast<std::size_t>(isToBeCut ? std::min(left, most) : most);
        const ssize_t count = recv(isAnswer ? server : client, bytes.data(), wish, 0);
        if (count <= 0 || send(isAnswer ? client : server, bytes.data(),
                               static_cast<std::size_t>(count), MSG_NOSIGNAL) != count) {
            return;
        }
        left -= isToBeCut ? count : 0;
    }
}

}  // namespace quorbel::testing
