#pragma once

#include "platform/Mutex.h"
#include "platform/Value.h"
#include "service/mail/MailMessage.h"
#include "service/mail/MailServer.h"
#include "service/mail/SmtpDelivery.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {

/// Sends mail through the server that the settings name. Safe to use from any thread.
///
/// Queued mail is sent on a thread of its own, one after the other. One that could not be sent is
/// tried again three times, after half a minute, two and eight minutes, for those recipients for
/// whom there is hope; what the server refuses for good is not tried again. The first failure is
/// said in the journal, and mail that is given up is counted and said there, too.
class MailSender {
public:
    static constexpr std::size_t kMostQueued = 256;

    /// `minute` is how long a minute lasts, for tests.
    explicit MailSender(std::chrono::milliseconds minute = std::chrono::minutes(1));
    ~MailSender() { shutDown(); }
    MailSender(const MailSender &) = delete;
    MailSender &operator=(const MailSender &) = delete;

    /// For mail that is sent from now on.
    void configure(const Dictionary &settings);

    /// Queues a message and returns at once. Recipients that are no addresses are said in the
    /// journal, and the others get it. False, and counted as dropped, when there are no others or
    /// too many messages are queued already.
    bool submit(MailMessage message);

    /// Sends a message now, through the server of these settings, once. Returns "OK", or one line
    /// that says what is wrong; it names the recipients that are no addresses or were refused,
    /// while the others get the message. Returns early, with the latter, when cancelSends() is
    /// called.
    std::string send(const MailMessage &message, const Dictionary &settings);

    /// Ends every send() within about a second, and every later one at once. Queued mail waits.
    void cancelSends();
    /// Waits until each queued mail has been tried once, until `deadline` at the latest.
    void finishFirstTries(std::chrono::steady_clock::time_point deadline);
    /// Ends what is being sent, and gives up what is queued, which is counted and said in the
    /// journal. Nothing is taken any more.
    void shutDown();

    /// Messages that reached the server for at least one recipient.
    [[nodiscard]] std::uint64_t sent() const { return m_sent; }
    /// Messages that were given up for at least one recipient.
    [[nodiscard]] std::uint64_t dropped() const { return m_dropped; }

private:
    using Clock = std::chrono::steady_clock;

    struct Job {
        MailMessage message;
        std::vector<MailAddress> recipients;
        std::vector<MailAddress> pending;  ///< those whom it may yet reach
        std::size_t tries = 0;             ///< under m_mutex
        bool reached = false;              ///< somebody got it
        bool lost = false;                 ///< somebody will never get it
        Clock::time_point due;
    };

    void work();
    std::list<Job>::iterator nextJob() REQUIRES(m_mutex);
    std::optional<std::chrono::milliseconds> attempt(Job &job, const MailServer &server);

    const std::chrono::milliseconds m_minute;
    std::atomic<bool> m_cancelSends = false;
    std::atomic<bool> m_shuttingDown = false;
    std::atomic<std::uint64_t> m_sent = 0;
    std::atomic<std::uint64_t> m_dropped = 0;

    Mutex m_mutex;
    Condition m_wake;
    Condition m_tried;
    MailServer m_server GUARDED_BY(m_mutex);
    std::list<Job> m_queue GUARDED_BY(m_mutex);

    std::thread m_thread;
};

}  // namespace quorbel
