// Syslog over TLS (RFC 5425), the client's side.

#include "service/output/ForwardConnection.h"

#include <openssl/err.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

struct Free {
    void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
    void operator()(SSL *ssl) const { SSL_free(ssl); }
};
using Context = std::unique_ptr<SSL_CTX, Free>;
using Session = std::unique_ptr<SSL, Free>;

/// Why the last operation failed. OpenSSL keeps a queue of reasons, which this empties.
std::string lastReason() {
    const unsigned long code = ERR_peek_last_error();
    const char *reason = ERR_reason_error_string(code);
    ERR_clear_error();
    return reason == nullptr ? "unknown reason" : reason;
}

/// OpenSSL would ask the terminal.
int noPassword(char * /*buffer*/, int /*size*/, int /*writing*/, void * /*self*/) {
    return 0;
}

/// What cannot be used; empty when all can.
std::string useFiles(SSL_CTX *context, const ForwardSettings &settings) {
    const auto cannotUse = [](const std::string &file) {
        return file + " cannot be used: " + lastReason();
    };
    if (settings.authorityFile.empty()
            ? SSL_CTX_set_default_verify_paths(context) != 1
            : SSL_CTX_load_verify_file(context, settings.authorityFile.c_str()) != 1) {
        return cannotUse(settings.authorityFile);
    }
    if (settings.certificateFile.empty()) {
        return {};
    }
    if (SSL_CTX_use_certificate_chain_file(context, settings.certificateFile.c_str()) != 1) {
        return cannotUse(settings.certificateFile);
    }
    if (SSL_CTX_use_PrivateKey_file(context, settings.keyFile.c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_check_private_key(context) != 1) {
        return cannotUse(settings.keyFile);
    }
    return {};
}

/// Whom the certificate must have been made for.
bool expectName(SSL *ssl, const std::string &name) {
    X509_VERIFY_PARAM *rules = SSL_get0_param(ssl);
    if (X509_VERIFY_PARAM_set1_ip_asc(rules, name.c_str()) == 1) {
        return true;
    }
    ERR_clear_error();
    X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return X509_VERIFY_PARAM_set1_host(rules, name.c_str(), name.size()) == 1 &&
           // What SSL_set_tlsext_host_name() stands for, which casts as C does.
           SSL_ctrl(ssl, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
                    const_cast<char *>(name.c_str())) == 1;
}

class TlsConnection final : public ForwardConnection {
public:
    TlsConnection(Context context, Session ssl, UniqueFd socket, const std::atomic<bool> &stop)
        : ForwardConnection(std::move(socket), stop),
          m_context(std::move(context)),
          m_ssl(std::move(ssl)) {
        SSL_set_fd(m_ssl.get(), fd());
        SSL_set_connect_state(m_ssl.get());
    }

    bool shakeHands() {
        int result = 0;
        while ((result = call([this] { return SSL_do_handshake(m_ssl.get()); })) != 1) {
            const short events = eventsAfter(result);
            if (events == 0) {
                return false;
            }
            const Waited waited = wait(events);
            if (waited != Waited::kReady) {
                return breaks(waited == Waited::kStopped ? "the service stops"
                                                         : "it does not answer");
            }
        }
        return true;
    }
    std::optional<Sent> send(std::string_view &bytes) override {
        while (!bytes.empty()) {
            std::size_t count = 0;
            // A call that is repeated must have the same bytes (SSL_MODE_ENABLE_PARTIAL_WRITE gives
            // back what went), so that no record is cut where a wait ends.
            const int result =
                call([&] { return SSL_write_ex(m_ssl.get(), bytes.data(), bytes.size(), &count); });
            if (result == 1) {
                bytes.remove_prefix(count);
                continue;
            }
            const short events = eventsAfter(result);
            if (events == 0) {
                return std::nullopt;
            }
            const Waited waited = wait(events);
            if (waited != Waited::kReady) {
                return waited == Waited::kStopped ? Sent::kStopped : Sent::kBlocked;
            }
        }
        return Sent::kAll;
    }
    bool listen() override {
        std::array<char, 4096> ignored{};
        std::size_t count = 0;
        int result = 1;
        while (result == 1) {
            result = call(
                [&] { return SSL_read_ex(m_ssl.get(), ignored.data(), ignored.size(), &count); });
        }
        return eventsAfter(result) != 0;
    }
    void finish() override {
        m_isFinished = true;
        ERR_clear_error();
        SSL_shutdown(m_ssl.get());
        ::shutdown(fd(), SHUT_WR);
    }
    [[nodiscard]] std::uint64_t written() const override {
        return BIO_number_written(SSL_get_wbio(m_ssl.get()));
    }

private:
    template <typename Call>
    int call(const Call &function) {
        ERR_clear_error();
        errno = 0;
        return function();
    }
    /// What to wait for; 0 when the connection is at its end.
    short eventsAfter(int result) {
        const int cause = errno;
        const int error = SSL_get_error(m_ssl.get(), result);
        if (error == SSL_ERROR_WANT_READ) {
            return POLLIN;
        }
        if (error == SSL_ERROR_WANT_WRITE) {
            return POLLOUT;
        }
        const long verified = SSL_get_verify_result(m_ssl.get());
        const bool hasEnded = error == SSL_ERROR_SSL && ERR_GET_REASON(ERR_peek_last_error()) ==
                                                            SSL_R_UNEXPECTED_EOF_WHILE_READING;
        // Many servers end without a word of TLS once we did.
        m_isClosed = error == SSL_ERROR_ZERO_RETURN || (m_isFinished && hasEnded);
        if (m_isClosed || hasEnded) {
            breaks("it closed the connection");
        } else if (error == SSL_ERROR_SYSCALL && cause != 0) {
            breaks(std::generic_category().message(cause));
        } else if (verified != X509_V_OK) {
            breaks(std::string("its certificate is refused: ") +
                   X509_verify_cert_error_string(verified));
        } else {
            breaks("TLS failed: " + lastReason());
        }
        return 0;
    }

    Context m_context;
    Session m_ssl;
    bool m_isFinished = false;
};

}  // namespace

std::variant<std::unique_ptr<ForwardConnection>, std::string> openTls(
    const ForwardSettings &settings, UniqueFd socket, const std::atomic<bool> &stop) {
    ERR_clear_error();
    Context context(SSL_CTX_new(TLS_client_method()));
    if (!context) {
        return lastReason();
    }
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_mode(context.get(),
                     SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    SSL_CTX_set_default_passwd_cb(context.get(), noPassword);
    std::string problem = useFiles(context.get(), settings);
    if (!problem.empty()) {
        return problem;
    }
    Session ssl(SSL_new(context.get()));
    if (!ssl || !expectName(ssl.get(), settings.serverName)) {
        return lastReason();
    }
    auto connection = std::make_unique<TlsConnection>(std::move(context), std::move(ssl),
                                                      std::move(socket), stop);
    if (!connection->shakeHands()) {
        return connection->problem();
    }
    return connection;
}

}  // namespace quorbel
