#pragma once

#include "common/ServiceConfiguration.h"
#include "platform/UniqueFd.h"

#include <openssl/ssl.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace quorbel {

/// A connection to a syslog server over UDP, TCP or TLS. One thread. Whatever waits ends soon
/// after `stop` was set, but for the look-up of the server's name.
class ForwardConnection {
public:
    /// Looks up the server and connects, with ten seconds for each of its addresses. A TLS server
    /// must show a certificate that bears its name. One line that says what is wrong when that
    /// fails.
    static std::variant<std::unique_ptr<ForwardConnection>, std::string> open(
        const ForwardSettings &settings, const std::atomic<bool> &stop);
    virtual ~ForwardConnection() = default;
    ForwardConnection(const ForwardConnection &) = delete;
    ForwardConnection &operator=(const ForwardConnection &) = delete;

    [[nodiscard]] int fd() const { return m_socket.get(); }

    enum class Sent { kAll, kStopped, kBlocked };
    /// Sends all of the bytes; over UDP they are one datagram. kBlocked when the server has taken
    /// nothing for ten seconds: the same is to be called again with what is left. Nothing when the
    /// connection is broken: problem().
    virtual std::optional<Sent> send(std::string_view &bytes) = 0;
    /// Takes in what the server says, which means nothing. False when it has closed the connection,
    /// or that is broken.
    virtual bool listen() = 0;
    /// Says that nothing more comes. What was sent has arrived when listen() is false then, and
    /// isClosed().
    virtual void finish() {}
    [[nodiscard]] bool isClosed() const { return m_isClosed; }

    /// How much went into the connection, in the bytes of its wire.
    [[nodiscard]] virtual std::uint64_t written() const = 0;
    /// How much of that the server's system has not confirmed.
    [[nodiscard]] std::uint64_t unconfirmed() const;

    [[nodiscard]] const std::string &problem() const { return m_problem; }

protected:
    ForwardConnection(UniqueFd socket, const std::atomic<bool> &stop)
        : m_socket(std::move(socket)), m_stop(stop) {}

    enum class Waited { kReady, kStopped, kTimeout };
    [[nodiscard]] Waited wait(short events) const;
    bool breaks(const std::string &problem);

    const UniqueFd m_socket;
    const std::atomic<bool> &m_stop;
    bool m_isClosed = false;  ///< by the server, in order

private:
    std::string m_problem;
};

/// Over a socket that is connected.
std::variant<std::unique_ptr<ForwardConnection>, std::string> openTls(
    const ForwardSettings &settings, UniqueFd socket, const std::atomic<bool> &stop);

}  // namespace quorbel
