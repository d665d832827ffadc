#pragma once

#include "support/TestAuthority.h"
#include "support/WaitUntil.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::testing {

/// Stands in for a mail server on a port of its own of 127.0.0.1; takes one connection after the
/// other on a thread of its own.
class SmtpStandIn {
public:
    enum class Security { kNone, kStartTls, kTls };

    struct Setup {
        Security security = Security::kNone;
        TestAuthority::Issued identity;  ///< for TLS
        std::string user;                ///< when not empty, nobody sends without logging in
        std::string password;
    };

    struct Mail {
        std::string sender;
        std::vector<std::string> recipients;
        std::string text;  ///< with CR LF, and without the dots that the transfer doubles
        bool wasEncrypted = false;
        bool wasLoggedIn = false;
    };

    SmtpStandIn() : SmtpStandIn(Setup()) {}
    /// Throws std::runtime_error when it cannot listen.
    explicit SmtpStandIn(Setup setup);
    ~SmtpStandIn();
    SmtpStandIn(const SmtpStandIn &) = delete;
    SmtpStandIn &operator=(const SmtpStandIn &) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }

    /// From now on a recipient gets this answer ("550 No such user"); an empty one takes it back.
    void answerRecipient(const std::string &address, const std::string &answer);
    /// From now on every mail's text gets this answer.
    void answerMails(const std::string &answer);
    /// From now on it takes connections and says nothing.
    void keepSilent();

    [[nodiscard]] std::vector<Mail> mails() const;
    /// How many connections it took.
    [[nodiscard]] std::size_t connections() const { return m_connections; }
    /// The mails so far, as soon as there are `count` of them or the test's patience has ended.
    [[nodiscard]] std::vector<Mail> waitForMails(std::size_t count) const;

private:
    class Session;

    void serve();
    bool waitForInput(int fd) const;

    const Setup m_setup;
    int m_listener = -1;
    int m_stopSignal = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_silent = false;
    std::atomic<std::size_t> m_connections = 0;

    mutable std::mutex m_mutex;
    // Under m_mutex.
    std::map<std::string, std::string> m_answers;
    std::string m_mailAnswer = "250 Taken";
    std::vector<Mail> m_mails;

    std::thread m_thread;
};

}  // namespace quorbel::testing
