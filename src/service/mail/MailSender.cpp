#include "service/mail/MailSender.h"

#include "service/base/Journal.h"
#include "service/base/LastResult.h"
#include "service/base/QuotedText.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <utility>

namespace quorbel {

namespace {

constexpr const char *kSent = "OK";

// How long to wait before a mail is tried again, in half minutes.
constexpr std::array<int, 3> kPauses{1, 4, 16};

MailStamp newStamp() {
    constexpr int kWords = 4;
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::random_device random;
    MailStamp stamp{std::time(nullptr), "quorbel."};
    for (int i = 0; i < kWords; ++i) {
        for (unsigned bits = random(), digits = 0; digits < 8; ++digits, bits >>= 4U) {
            stamp.id += kDigits[bits & 0xFU];
        }
    }
    return stamp;
}

std::string oneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return text;
}

std::string noAddress(std::string_view text) {
    return quoted(text) + " is not a valid e-mail address";
}

std::string securityProblem(const MailServer &server) {
    using Security = MailServer::Security;
    if (server.security == Security::kUnknown) {
        return "The mail server's connection security " + quoted(server.unknownSecurity) +
               " is not one of " + quoted(MailServer::kNoneText) + ", " +
               quoted(MailServer::kStartTlsText) + " or " + quoted(MailServer::kTlsText);
    }
    if (server.security == Security::kNotChosen && !server.user.empty()) {
        return "No connection security is chosen for the mail server; the password is sent "
               "without encryption only with " +
               quoted(MailServer::kNoneText);
    }
    return "";
}

/// What keeps these settings from sending anything; empty when nothing does.
std::string settingsProblem(const MailServer &server) {
    if (server.host.empty()) {
        return "No mail server is set";
    }
    if (std::string problem = securityProblem(server); !problem.empty()) {
        return problem;
    }
    return readMailAddress(server.sender) ? "" : "The sender " + noAddress(server.sender);
}

struct Recipients {
    std::vector<MailAddress> addresses;
    std::vector<std::string> others;  ///< texts that are no addresses
};

Recipients readRecipients(const MailMessage &message) {
    Recipients recipients;
    for (const std::string &text : message.recipients) {
        if (auto address = readMailAddress(text)) {
            recipients.addresses.push_back(std::move(*address));
        } else {
            recipients.others.push_back(text);
        }
    }
    return recipients;
}

/// Two problems as one line; either may be empty.
std::string withNext(const std::string &problem, const std::string &next) {
    return problem + (problem.empty() || next.empty() ? "" : "; ") + next;
}

std::string noAddresses(const std::vector<std::string> &texts) {
    std::string problems;
    for (const std::string &text : texts) {
        problems = withNext(problems, noAddress(text));
    }
    return problems;
}

/// Why not all of the recipients got a mail; empty when they did.
std::string problemOf(const SmtpResult &result, const std::vector<MailAddress> &recipients) {
    if (!result.isSent()) {
        return result.problem;
    }
    std::string refused;
    for (const SmtpResult::Refusal &refusal : result.refused) {
        refused += refused.empty() ? "The mail server refused " : ", ";
        refused += recipients[refusal.recipient].address + " (" + refusal.answer + ')';
    }
    return refused;
}

struct Addressees {
    const std::vector<MailAddress> &named;  ///< in the mail itself
    const std::vector<MailAddress> &meant;  ///< to whom it goes now
};

SmtpResult deliver(const MailMessage &message, Addressees addressees, const MailServer &server,
                   std::chrono::milliseconds minute, const std::atomic<bool> &stop) {
    SmtpResult result;
    result.problem = settingsProblem(server);
    const auto sender = readMailAddress(server.sender);
    if (result.problem.empty() && sender) {
        result =
            deliverMail(server, sender->address, addressees.meant,
                        writeMail(message, *sender, addressees.named, newStamp()), minute, stop);
    }
    result.problem = oneLine(std::move(result.problem));
    return result;
}

void sayPostponed(const std::map<std::string, std::string> &addressesByReason) {
    for (const auto &[reason, addresses] : addressesByReason) {
        std::string text = "An e-mail to ";
        text.append(addresses)
            .append(" could not be sent yet and will be tried again: ")
            .append(reason);
        say(JournalLevel::kWarning, text);
    }
}

void noteFailed(const MailMessage &message, std::string_view problem) {
    if (message.result) {
        message.result->noteFailed(problem);
    }
}

struct SmtpOutcome {
    std::string reason;  ///< empty when the recipient got the mail
    bool forGood = false;
};

SmtpOutcome outcomeFor(const SmtpResult &result, std::size_t recipient) {
    const auto refusal =
        std::ranges::find(result.refused, recipient, &SmtpResult::Refusal::recipient);
    return refusal != result.refused.end() ? SmtpOutcome{refusal->answer, refusal->forGood}
                                           : SmtpOutcome{result.problem, result.forGood};
}

}  // namespace

MailSender::MailSender(std::chrono::milliseconds minute)
    : m_minute(minute), m_thread([this] { work(); }) {}

void MailSender::cancelSends() {
    m_cancelSends = true;
}

void MailSender::configure(const Dictionary &settings) {
    MailServer server = mailServerFrom(settings);
    {
        const MutexLock lock(m_mutex);
        if (server == m_server) {
            return;
        }
        m_server = std::move(server);
        // Perhaps this is what was wrong.
        for (Job &job : m_queue) {
            job.due = Clock::now();
        }
    }
    m_wake.notifyOne();
}

std::string MailSender::send(const MailMessage &message, const Dictionary &settings) {
    const auto [addresses, others] = readRecipients(message);
    if (addresses.empty()) {
        m_dropped += others.empty() ? 0 : 1;
        return others.empty() ? "There are no recipients" : noAddresses(others);
    }
    const SmtpResult result =
        deliver(message, {addresses, addresses}, mailServerFrom(settings), m_minute, m_cancelSends);
    const std::string problem = withNext(problemOf(result, addresses), noAddresses(others));
    m_sent += result.isSent() ? 1 : 0;
    m_dropped += problem.empty() ? 0 : 1;
    return problem.empty() ? kSent : problem;
}

bool MailSender::submit(MailMessage message) {
    auto [addresses, others] = readRecipients(message);
    for (const std::string &text : others) {
        say(JournalLevel::kWarning, "An e-mail was not sent: " + noAddress(text));
    }
    {
        const MutexLock lock(m_mutex);
        const bool isFull = m_queue.size() >= kMostQueued;
        if (isFull || !others.empty()) {
            noteFailed(message, isFull ? "Too many e-mails are waiting" : noAddresses(others));
        }
        if (addresses.empty() || m_shuttingDown || isFull) {
            ++m_dropped;
            return false;
        }
        m_queue.push_back(
            {std::move(message), addresses, addresses, 0, false, !others.empty(), Clock::now()});
    }
    m_wake.notifyOne();
    return true;
}

void MailSender::finishFirstTries(Clock::time_point deadline) {
    MutexLock lock(m_mutex);
    m_tried.waitUntil(lock, deadline, [this]() REQUIRES(m_mutex) {
        return std::ranges::none_of(m_queue, [](const Job &job) { return job.tries == 0; });
    });
}

void MailSender::shutDown() {
    cancelSends();
    {
        const MutexLock lock(m_mutex);
        m_shuttingDown = true;
    }
    m_wake.notifyOne();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    const MutexLock lock(m_mutex);
    if (m_queue.empty()) {
        return;
    }
    say(JournalLevel::kWarning,
        "The service is stopping; e-mails that were not sent: " + std::to_string(m_queue.size()));
    for (const Job &job : std::exchange(m_queue, {})) {
        m_sent += job.reached ? 1 : 0;
        ++m_dropped;
    }
}

/// The job that is to be tried first. Precondition: there is one.
std::list<MailSender::Job>::iterator MailSender::nextJob() {
    return std::ranges::min_element(m_queue, {}, &Job::due);
}

void MailSender::work() {
    MutexLock lock(m_mutex);
    while (!m_shuttingDown) {
        if (m_queue.empty()) {
            m_wake.wait(lock);
            continue;
        }
        const auto next = nextJob();
        if (next->due > Clock::now()) {
            m_wake.waitUntil(lock, next->due);
            continue;
        }
        const MailServer server = m_server;
        lock.unlock();
        // Nobody else takes a job away, and configure() changes nothing of it but when it is due.
        const auto pause = attempt(*next, server);
        lock.lock();
        if (m_shuttingDown) {
            return;
        }
        if (!pause) {
            m_queue.erase(next);
        } else {
            ++next->tries;
            next->due = server == m_server ? Clock::now() + *pause : next->due;
        }
        m_tried.notifyAll();
    }
}

/// Tries once. Returns how long to wait before the next try; nothing when the job is done.
std::optional<std::chrono::milliseconds> MailSender::attempt(Job &job, const MailServer &server) {
    const SmtpResult result =
        deliver(job.message, {job.recipients, job.pending}, server, m_minute, m_shuttingDown);
    if (m_shuttingDown) {
        return std::nullopt;
    }
    job.reached = job.reached || result.isSent();
    if (const std::string problem = problemOf(result, job.pending); !problem.empty()) {
        noteFailed(job.message, problem);
    }
    const bool isLastTry = job.tries == kPauses.size();
    std::vector<MailAddress> pending;
    std::map<std::string, std::string> postponed;  // for whom, by the reason
    for (std::size_t i = 0; i < job.pending.size(); ++i) {
        const SmtpOutcome outcome = outcomeFor(result, i);
        if (outcome.reason.empty()) {
            continue;
        }
        if (outcome.forGood || isLastTry) {
            say(JournalLevel::kWarning,
                "An e-mail to " + job.pending[i].address + " was not sent: " + outcome.reason);
            job.lost = true;
        } else {
            std::string &others = postponed[outcome.reason];
            others += (others.empty() ? "" : ", ") + job.pending[i].address;
            pending.push_back(std::move(job.pending[i]));
        }
    }
    if (job.tries == 0) {
        sayPostponed(postponed);
    }
    job.pending = std::move(pending);
    if (!job.pending.empty()) {
        return kPauses[job.tries] * m_minute / 2;
    }
    m_sent += job.reached ? 1 : 0;
    m_dropped += job.lost ? 1 : 0;
    return std::nullopt;
}

}  // namespace quorbel
