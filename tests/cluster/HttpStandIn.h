#pragma once

#include "platform/UniqueFd.h"
#include "support/TestAuthority.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::testing {

/// An HTTP server that answers whatever a test wants, on a port of 127.0.0.1 and a thread of its
/// own; one request a connection, one connection after the other.
class HttpStandIn {
public:
    struct Request {
        std::string head;
        std::string body;
    };
    /// The bytes to answer with; nothing: it says nothing, and waits for the client to go.
    using Answer = std::function<std::optional<std::string>(const Request &)>;

    explicit HttpStandIn(Answer answer,
                         const std::optional<TestAuthority::Issued> &identity = std::nullopt);
    ~HttpStandIn();
    HttpStandIn(const HttpStandIn &) = delete;
    HttpStandIn &operator=(const HttpStandIn &) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] std::string address(const std::string &scheme = "http") const {
        return scheme + "://127.0.0.1:" + std::to_string(m_port);
    }
    [[nodiscard]] std::vector<Request> requests() const;

    /// A whole answer.
    static std::string answer(const std::string &status, const std::string &body);

private:
    class Connection;

    void serve();
    void serveOne(Connection &connection);

    const Answer m_answer;
    const std::optional<TestAuthority::Issued> m_identity;
    UniqueFd m_listener;
    UniqueFd m_stop;
    std::uint16_t m_port;
    mutable std::mutex m_mutex;
    std::vector<Request> m_requests;  ///< under m_mutex
    std::thread m_thread;
};

}  // namespace quorbel::testing
