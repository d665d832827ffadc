#pragma once

#include <memory>
#include <string>

namespace quorbel::testing {

/// A certificate authority of the test's own. Throws std::runtime_error when OpenSSL fails.
class TestAuthority {
public:
    explicit TestAuthority(const std::string &name = "Test authority");
    ~TestAuthority();
    TestAuthority(const TestAuthority &) = delete;
    TestAuthority &operator=(const TestAuthority &) = delete;

    /// Its own certificate, as PEM.
    [[nodiscard]] std::string certificate() const;

    struct Issued {
        std::string certificate;  ///< PEM
        std::string key;          ///< PEM
    };
    /// A certificate for servers of these names and for clients.
    [[nodiscard]] Issued issue(const std::string &names = "DNS:localhost,IP:127.0.0.1") const;
    /// The same, that was good until an hour ago.
    [[nodiscard]] Issued issueExpired(
        const std::string &names = "DNS:localhost,IP:127.0.0.1") const;

private:
    [[nodiscard]] Issued issueUntil(const std::string &names, long seconds) const;

    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel::testing
