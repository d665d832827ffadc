#include "cluster/HttpStandIn.h"

#include "support/LoopbackPorts.h"
#include "support/OpenSslFree.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <utility>

namespace quorbel::testing {

namespace {

using Free = OpenSslFree;

std::unique_ptr<SSL_CTX, Free> contextFor(const TestAuthority::Issued &identity) {
    std::unique_ptr<SSL_CTX, Free> context(SSL_CTX_new(TLS_server_method()));
    const std::unique_ptr<BIO, Free> certificateText(
        BIO_new_mem_buf(identity.certificate.data(), -1));
    const std::unique_ptr<BIO, Free> keyText(BIO_new_mem_buf(identity.key.data(), -1));
    const std::unique_ptr<X509, Free> certificate(
        PEM_read_bio_X509(certificateText.get(), nullptr, nullptr, nullptr));
    const std::unique_ptr<EVP_PKEY, Free> key(
        PEM_read_bio_PrivateKey(keyText.get(), nullptr, nullptr, nullptr));
    SSL_CTX_use_certificate(context.get(), certificate.get());
    SSL_CTX_use_PrivateKey(context.get(), key.get());
    return context;
}

std::size_t lengthIn(const std::string &head) {
    const std::string name = "Content-Length: ";
    const std::size_t at = head.find(name);
    return at == std::string::npos ? 0 : std::strtoul(head.c_str() + at + name.size(), nullptr, 10);
}

/// Whether all of a request's body is there; its head ends at `end`.
bool isWhole(const std::string &text, std::size_t end) {
    const std::string head = text.substr(0, end);
    return head.find("Transfer-Encoding: chunked") == std::string::npos
               ? text.size() >= end + 4 + lengthIn(head)
               : text.ends_with("\r\n0\r\n\r\n");
}

/// The bytes of a body that came in chunks (RFC 9112, 7.1).
std::string joined(std::string_view chunks) {
    std::string bytes;
    while (const auto size = std::strtoul(std::string(chunks.substr(0, 16)).c_str(), nullptr, 16)) {
        chunks.remove_prefix(chunks.find("\r\n") + 2);
        bytes += chunks.substr(0, size);
        chunks.remove_prefix(size + 2);
    }
    return bytes;
}

}  // namespace

class HttpStandIn::Connection {
public:
    Connection(UniqueFd socket, int stop) : m_socket(std::move(socket)), m_stop(stop) {}

    bool encrypt(const TestAuthority::Issued &identity) {
        m_context = contextFor(identity);
        m_ssl.reset(SSL_new(m_context.get()));
        SSL_set_fd(m_ssl.get(), m_socket.get());
        return SSL_accept(m_ssl.get()) == 1;
    }
    /// Appends what comes; false at the end.
    bool read(std::string &text) {
        std::array<char, 16384> bytes{};
        std::array<pollfd, 2> wanted{{{m_socket.get(), POLLIN, 0}, {m_stop, POLLIN, 0}}};
        if (!m_ssl || SSL_pending(m_ssl.get()) == 0) {
            poll(wanted.data(), wanted.size(), -1);
        }
        if (wanted[1].revents != 0) {
            return false;
        }
        const auto count =
            m_ssl ? SSL_read(m_ssl.get(), bytes.data(), static_cast<int>(bytes.size()))
                  : static_cast<int>(recv(m_socket.get(), bytes.data(), bytes.size(), 0));
        text.append(bytes.data(), static_cast<std::size_t>(std::max(count, 0)));
        return count > 0;
    }
    void write(std::string_view text) {
        while (!text.empty()) {
            const auto count =
                m_ssl ? SSL_write(m_ssl.get(), text.data(), static_cast<int>(text.size()))
                      : static_cast<int>(
                            send(m_socket.get(), text.data(), text.size(), MSG_NOSIGNAL));
            if (count <= 0) {
                return;
            }
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

private:
    UniqueFd m_socket;
    int m_stop;
    std::unique_ptr<SSL_CTX, Free> m_context;
    std::unique_ptr<SSL, Free> m_ssl;
};

HttpStandIn::HttpStandIn(Answer answer, const std::optional<TestAuthority::Issued> &identity)
    : m_answer(std::move(answer)),
      m_identity(identity),
      m_listener(listenOn(0)),
      m_stop(eventfd(0, EFD_CLOEXEC)),
      m_port(portOf(m_listener)) {
    std::signal(SIGPIPE, SIG_IGN);
    m_thread = std::thread([this] { serve(); });
}

HttpStandIn::~HttpStandIn() {
    eventfd_write(m_stop.get(), 1);
    m_thread.join();
}

std::string HttpStandIn::answer(const std::string &status, const std::string &body) {
    return "HTTP/1.1 " + status +
           "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           body;
}

std::vector<HttpStandIn::Request> HttpStandIn::requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void HttpStandIn::serve() {
    while (true) {
        std::array<pollfd, 2> wanted{{{m_listener.get(), POLLIN, 0}, {m_stop.get(), POLLIN, 0}}};
        poll(wanted.data(), wanted.size(), -1);
        if (wanted[1].revents != 0) {
            return;
        }
        Connection connection(UniqueFd(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC)),
                              m_stop.get());
        if (!m_identity || connection.encrypt(*m_identity)) {
            serveOne(connection);
        }
    }
}

void HttpStandIn::serveOne(Connection &connection) {
    std::string text;
    std::size_t end = std::string::npos;
    while (end == std::string::npos || !isWhole(text, end)) {
        if (!connection.read(text)) {
            return;
        }
        end = end == std::string::npos ? text.find("\r\n\r\n") : end;
    }
    Request request{text.substr(0, end), text.substr(end + 4)};
    if (request.head.find("chunked") != std::string::npos) {
        request.body = joined(request.body);
    }
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
    }
    if (const auto bytes = m_answer(request)) {
        connection.write(*bytes);
        return;
    }
    while (connection.read(text)) {
    }
}

}  // namespace quorbel::testing
