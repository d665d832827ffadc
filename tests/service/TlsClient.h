#pragma once

#include "platform/UniqueFd.h"
#include "support/OpenSslFree.h"
#include "support/TestAuthority.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace quorbel {

inline UniqueFd connectTo(std::uint16_t port) {
    UniqueFd fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval limit{20, 0};
    setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    // What was sent is with the service at once, instead of waiting for more.
    const int on = 1;
    setsockopt(fd.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(fd.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        fd.reset();
    }
    return fd;
}

/// A device that speaks TLS.
class Client {
public:
    struct Setup {
        testing::TestAuthority::Issued identity;  ///< empty: it has none
        int version = TLS1_3_VERSION;
    };

    Client(std::uint16_t port, const testing::TestAuthority &trusted)
        : Client(port, trusted, Setup()) {}
    Client(std::uint16_t port, const testing::TestAuthority &trusted, const Setup &setup)
        : Client(connectTo(port), trusted, setup) {}
    Client(UniqueFd socket, const testing::TestAuthority &trusted)
        : Client(std::move(socket), trusted, Setup()) {}
    Client(UniqueFd socket, const testing::TestAuthority &trusted, const Setup &setup)
        : m_context(SSL_CTX_new(TLS_client_method())), m_socket(std::move(socket)) {
        SSL_CTX_set_min_proto_version(m_context.get(), setup.version);
        SSL_CTX_set_max_proto_version(m_context.get(), setup.version);
        SSL_CTX_set_security_level(m_context.get(), 0);
        trust(trusted.certificate());
        if (!setup.identity.key.empty()) {
            show(setup.identity);
        }
        m_ssl.reset(SSL_new(m_context.get()));
        SSL_set_fd(m_ssl.get(), m_socket.get());
        SSL_set1_host(m_ssl.get(), "localhost");
        m_isConnected = SSL_connect(m_ssl.get()) == 1;
    }

    [[nodiscard]] bool isConnected() const { return m_isConnected; }
    bool send(std::string_view bytes) {
        std::size_t written = 0;
        return SSL_write_ex(m_ssl.get(), bytes.data(), bytes.size(), &written) == 1;
    }
    void close() { SSL_shutdown(m_ssl.get()); }
    /// Whether the service ends the connection; waits for that.
    bool isRefused() {
        char byte = 0;
        return !m_isConnected || SSL_read(m_ssl.get(), &byte, 1) <= 0;
    }

private:
    using Free = testing::OpenSslFree;
    using Certificate = std::unique_ptr<X509, Free>;

    static std::unique_ptr<BIO, Free> reader(const std::string &text) {
        return std::unique_ptr<BIO, Free>(
            BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    }
    void trust(const std::string &pem) {
        const auto bio = reader(pem);
        const Certificate authority(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
        X509_STORE_add_cert(SSL_CTX_get_cert_store(m_context.get()), authority.get());
        SSL_CTX_set_verify(m_context.get(), SSL_VERIFY_PEER, nullptr);
    }
    void show(const testing::TestAuthority::Issued &identity) {
        const auto certificateText = reader(identity.certificate);
        const auto keyText = reader(identity.key);
        const Certificate certificate(
            PEM_read_bio_X509(certificateText.get(), nullptr, nullptr, nullptr));
        const std::unique_ptr<EVP_PKEY, Free> key(
            PEM_read_bio_PrivateKey(keyText.get(), nullptr, nullptr, nullptr));
        SSL_CTX_use_certificate(m_context.get(), certificate.get());
        SSL_CTX_use_PrivateKey(m_context.get(), key.get());
    }

    std::unique_ptr<SSL_CTX, Free> m_context;
    UniqueFd m_socket;
    std::unique_ptr<SSL, Free> m_ssl;
    bool m_isConnected = false;
};

}  // namespace quorbel
