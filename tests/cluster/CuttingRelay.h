#pragma once

#include "platform/UniqueFd.h"

#include <atomic>
#include <cstdint>
#include <thread>

namespace quorbel::testing {

/// Stands between a client and a server of 127.0.0.1, one connection after the other, and cuts them
/// when it is told to.
class CuttingRelay {
public:
    explicit CuttingRelay(std::uint16_t server);
    ~CuttingRelay();
    CuttingRelay(const CuttingRelay &) = delete;
    CuttingRelay &operator=(const CuttingRelay &) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// The connection that there is, or the next one, is cut when so many more bytes went to the
    /// server, or as soon as it answers.
    void cutAfter(std::int64_t bytes) { m_left = bytes; }
    /// How many connections were cut.
    [[nodiscard]] int cuts() const { return m_cuts; }

private:
    void serve();
    void pass(int client, int server);

    const std::uint16_t m_server;
    UniqueFd m_listener;
    UniqueFd m_stop;
    std::uint16_t m_port;
    std::atomic<std::int64_t> m_left = -1;  ///< below 0: all
    std::atomic<int> m_cuts = 0;
    std::thread m_thread;
};

}  // namespace quorbel::testing
