#include "service/input/TlsContext.h"

#include "platform/Files.h"

#include <openssl/err.h>
#include <openssl/x509_vfy.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr const char *kCertificateName = "cert.pem";
constexpr const char *kKeyName = "key.pem";

/// Why the last operation failed. OpenSSL keeps a queue of reasons, which this empties.
std::string lastReason() {
    const unsigned long code = ERR_peek_last_error();
    const char *reason = ERR_reason_error_string(code);
    ERR_clear_error();
    return reason == nullptr ? "unknown reason" : reason;
}

class TlsChannel final : public StreamChannel {
public:
    TlsChannel(SSL *ssl, UniqueFd socket, TlsContext::RefusalHandler onRefusal)
        : m_socket(std::move(socket)), m_ssl(ssl), m_onRefusal(std::move(onRefusal)) {
        SSL_set_fd(ssl, m_socket.get());
        SSL_set_accept_state(ssl);
    }

    ~TlsChannel() override {
        ERR_clear_error();
        if (!m_isEstablished) {
            m_onRefusal(m_reason);
        } else if (!m_isBroken) {
            // Says goodbye if the socket has room for it.
            SSL_shutdown(m_ssl.get());
        }
    }
    TlsChannel(const TlsChannel &) = delete;
    TlsChannel &operator=(const TlsChannel &) = delete;

    [[nodiscard]] int fd() const override { return m_socket.get(); }
    [[nodiscard]] bool isEstablished() const override { return m_isEstablished; }

    Read read(char *buffer, std::size_t room) override {
        ERR_clear_error();
        if (!m_isEstablished) {
            const int result = SSL_do_handshake(m_ssl.get());
            if (result != 1) {
                return {0, nextAfterFailure(result)};
            }
            m_isEstablished = true;
        }
        std::size_t held = 0;
        // One call gives one record at most. Nobody would tell of a part of one that is left.
        while (room - held >= kLeastRoom) {
            std::size_t count = 0;
            ERR_clear_error();
            const int result = SSL_read_ex(m_ssl.get(), buffer + held, room - held, &count);
            if (result != 1) {
                return {held, nextAfterFailure(result)};
            }
            held += count;
        }
        return {held, Next::kReadable};
    }

private:
    Next nextAfterFailure(int result) {
        switch (SSL_get_error(m_ssl.get(), result)) {
            case SSL_ERROR_WANT_READ:
                return Next::kReadable;
            case SSL_ERROR_WANT_WRITE:
                return Next::kWritable;
            case SSL_ERROR_ZERO_RETURN:
                return Next::kNothing;
            default:
                break;
        }
        m_isBroken = true;
        const long verified = SSL_get_verify_result(m_ssl.get());
        if (verified != X509_V_OK) {
            m_reason = X509_verify_cert_error_string(verified);
        } else if (ERR_peek_last_error() != 0) {
            m_reason = lastReason();
        } else {
            m_reason = "it was closed";
        }
        return Next::kNothing;
    }

    struct Free {
        void operator()(SSL *ssl) const { SSL_free(ssl); }
    };

    UniqueFd m_socket;
    std::unique_ptr<SSL, Free> m_ssl;
    TlsContext::RefusalHandler m_onRefusal;
    bool m_isEstablished = false;
    bool m_isBroken = false;
    std::string m_reason = "it took too long";
};

/// OpenSSL would ask the terminal.
int noPassword(char * /*buffer*/, int /*size*/, int /*writing*/, void * /*self*/) {
    return 0;
}

void setRules(SSL_CTX *context) {
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    // Clients are many and stay for long, so each keeps no more memory than it needs.
    SSL_CTX_set_mode(context, SSL_MODE_RELEASE_BUFFERS);
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_options(context, SSL_OP_NO_TICKET | SSL_OP_NO_RENEGOTIATION);
    SSL_CTX_set_default_passwd_cb(context, noPassword);
}

bool useAuthorities(SSL_CTX *context, const std::filesystem::path &file) {
    STACK_OF(X509_NAME) *names = SSL_load_client_CA_file(file.c_str());
    if (names == nullptr || SSL_CTX_load_verify_file(context, file.c_str()) != 1) {
        sk_X509_NAME_pop_free(names, X509_NAME_free);
        return false;
    }
    SSL_CTX_set_client_CA_list(context, names);
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    return true;
}

}  // namespace

bool TlsContext::isIn(const std::filesystem::path &folder) {
    return isThere(folder / kCertificateName) || isThere(folder / kKeyName);
}

std::variant<TlsContext, std::string> TlsContext::load(const std::filesystem::path &folder) {
    const auto certificate = folder / kCertificateName;
    const auto key = folder / kKeyName;
    const auto authorities = folder / "ca.pem";
    ERR_clear_error();
    Handle handle(SSL_CTX_new(TLS_server_method()));
    if (!handle) {
        return lastReason();
    }
    setRules(handle.get());
    const auto cannotUse = [](const std::filesystem::path &file) {
        return file.string() + " cannot be used: " + lastReason();
    };
    if (SSL_CTX_use_certificate_chain_file(handle.get(), certificate.c_str()) != 1) {
        return cannotUse(certificate);
    }
    if (SSL_CTX_use_PrivateKey_file(handle.get(), key.c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_check_private_key(handle.get()) != 1) {
        return cannotUse(key);
    }
    if (isThere(authorities) && !useAuthorities(handle.get(), authorities)) {
        return cannotUse(authorities);
    }
    return TlsContext(std::move(handle));
}

std::unique_ptr<StreamChannel> TlsContext::makeChannel(UniqueFd socket,
                                                       RefusalHandler onRefusal) const {
    SSL *ssl = SSL_new(m_handle.get());
    if (ssl == nullptr) {
        return nullptr;
    }
    return std::make_unique<TlsChannel>(ssl, std::move(socket), std::move(onRefusal));
}

}  // namespace quorbel
