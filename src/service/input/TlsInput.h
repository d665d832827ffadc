#pragma once

#include "service/base/SdEvent.h"
#include "service/collect/Collector.h"
#include "service/input/TcpInput.h"
#include "service/input/TlsContext.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace quorbel {

/// Receives messages over TLS (RFC 5425) while a certificate is there: `folder` holds "cert.pem"
/// and "key.pem", and "ca.pem" when clients have to show a certificate that it signed.
///
/// Connections are handled as TcpInput handles them. Loop thread only.
class TlsInput {
public:
    static constexpr std::uint16_t kDefaultPort = 6514;

    /// All must outlive the object. Port 0 takes any that is free.
    TlsInput(sd_event *loop, std::filesystem::path folder, std::uint16_t port, Collector &collector,
             Counters &counters, ConnectionShares &shares);
    ~TlsInput();
    TlsInput(const TlsInput &) = delete;
    TlsInput &operator=(const TlsInput &) = delete;

    /// Takes the certificate into use, for connections from now on, if it has changed; begins or
    /// ends listening as it came or went. One that cannot be used is said in the journal, and the
    /// last one stays in use.
    void configure();

    /// The listener to begin with, if it is on the port wanted; before configure().
    void resume(UniqueFd listener) { m_passed = std::move(listener); }

    /// Where it listens; 0 while it does not.
    [[nodiscard]] std::uint16_t port() const { return m_input ? m_input->port() : 0; }

    /// As TcpInput::drain().
    void drain(std::chrono::steady_clock::time_point deadline);
    /// Gives the listener to `keeper`, and ends the connections: nobody else could go on with them.
    void leave(std::chrono::steady_clock::time_point deadline, SocketKeeper &keeper);

private:
    std::string reload();
    std::string listen();
    std::unique_ptr<StreamChannel> makeChannel(UniqueFd socket, const std::string &host);
    void noteRefusal(const std::string &host, const std::string &reason);

    sd_event *m_loop;
    const std::filesystem::path m_folder;
    const std::uint16_t m_port;
    Collector &m_collector;
    Counters &m_counters;
    ConnectionShares &m_shares;
    std::string m_lastProblem;
    std::chrono::steady_clock::time_point m_refusalSaid;
    UniqueFd m_passed;
    std::optional<TlsContext> m_context;
    std::unique_ptr<TcpInput> m_input;
};

}  // namespace quorbel
