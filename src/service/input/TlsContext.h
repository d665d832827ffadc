#pragma once

#include "service/input/StreamChannel.h"

#include <openssl/ssl.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <variant>

namespace quorbel {

/// The certificate with which TLS connections are accepted, and what is asked of clients.
class TlsContext {
public:
    /// Whether a folder holds a certificate or a key.
    static bool isIn(const std::filesystem::path &folder);
    /// Reads "cert.pem" (with the authorities' certificates behind it, if any), "key.pem" and, if
    /// it is there, "ca.pem" from a folder. One line that says what is wrong when that fails.
    static std::variant<TlsContext, std::string> load(const std::filesystem::path &folder);

    /// Called with why a connection came to nothing.
    using RefusalHandler = std::function<void(const std::string &reason)>;
    /// The channel over a socket in non-blocking mode; null when there is no memory. It goes on
    /// when the context is gone.
    [[nodiscard]] std::unique_ptr<StreamChannel> makeChannel(UniqueFd socket,
                                                             RefusalHandler onRefusal) const;

private:
    struct Free {
        void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
    };
    using Handle = std::unique_ptr<SSL_CTX, Free>;

    explicit TlsContext(Handle handle) : m_handle(std::move(handle)) {}

    Handle m_handle;
};

}  // namespace quorbel
