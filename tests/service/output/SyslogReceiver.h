#pragma once

#include "platform/UniqueFd.h"
#include "support/OpenSslFree.h"
#include "support/TestAuthority.h"

#include <openssl/ssl.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::testing {

/// A syslog server on a port of its own: takes one connection after the other, with octet-counted
/// frames (RFC 6587, 3.4.1), over TLS where it has a certificate; or datagrams.
class SyslogReceiver {
public:
    struct Setup {
        bool datagrams = false;
        std::optional<TestAuthority::Issued> identity{};
        std::string clientAuthority{};  ///< PEM: clients must show a certificate of it
        std::uint16_t port = 0;         ///< 0: any
    };
    SyslogReceiver() : SyslogReceiver(Setup()) {}
    explicit SyslogReceiver(const Setup &setup);
    /// Resets its connection, as if its machine had gone.
    ~SyslogReceiver();
    SyslogReceiver(const SyslogReceiver &) = delete;
    SyslogReceiver &operator=(const SyslogReceiver &) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] std::vector<std::string> messages() const;
    [[nodiscard]] std::size_t count() const;
    /// What was not a frame where one had to begin.
    [[nodiscard]] bool isBroken() const { return m_isBroken; }
    /// Reads no more, or goes on.
    void hold(bool hold) { m_hold = hold; }
    /// Ends the connection that there is, with a reset, once it has taken so many messages more.
    void resetAfter(std::size_t messages) { m_untilReset = messages; }

private:
    void work();
    void serve(const UniqueFd &socket);
    void takeDatagrams();
    void takeFrames(std::string &bytes);
    void note(std::string message);

    const Setup m_setup;
    UniqueFd m_socket;
    std::uint16_t m_port = 0;
    std::unique_ptr<SSL_CTX, OpenSslFree> m_context;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_hold = false;
    std::atomic<bool> m_isBroken = false;
    std::atomic<std::size_t> m_untilReset = SIZE_MAX;

    mutable std::mutex m_mutex;
    std::vector<std::string> m_messages;  ///< under m_mutex

    std::thread m_thread;
};

}  // namespace quorbel::testing
