#pragma once

#include "service/mail/MailMessage.h"
#include "service/mail/MailServer.h"

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What became of one attempt to hand a mail to its server.
struct SmtpResult {
    struct Refusal {
        std::size_t recipient;  ///< its index
        std::string answer;     ///< what the server said
        bool forGood;
    };

    std::string problem;   ///< why nobody got the mail, as one line; empty when somebody did
    bool forGood = false;  ///< whether trying again is of no use
    std::vector<Refusal> refused;  ///< recipients whom the server did not take

    [[nodiscard]] bool isSent() const { return problem.empty(); }
};

/// Hands `text`, a whole mail, to the server for all recipients, in one connection that is closed
/// afterwards. Recipients whom the server refuses do not keep the others from getting it.
///
/// The server's certificate must be one that OpenSSL trusts. Waits for at most the server's
/// timeout, whose minutes last `minute` each; ends within about a second once `stop` is set.
SmtpResult deliverMail(const MailServer &server, const std::string &sender,
                       const std::vector<MailAddress> &recipients, std::string_view text,
                       std::chrono::milliseconds minute, const std::atomic<bool> &stop);

}  // namespace quorbel
