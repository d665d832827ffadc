#include "service/mail/SmtpDelivery.h"

#include "platform/Number.h"

#include <curl/curl.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <mutex>

namespace quorbel {

namespace {

struct CurlCleanup {
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
    void operator()(CURLU *url) const { curl_url_cleanup(url); }
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    void operator()(char *text) const { curl_free(text); }
};
using Transfer = std::unique_ptr<CURL, CurlCleanup>;
using TextList = std::unique_ptr<curl_slist, CurlCleanup>;

/// What a connection's callbacks share.
struct Exchange {
    std::string_view unsent;
    const std::atomic<bool> &stop;
    std::array<char, CURL_ERROR_SIZE> error{};

    std::size_t recipients = 0;  ///< how many were named to the server
    bool aboutRecipient = false;
    std::string answer;  ///< to the last command, while it speaks of failure
    int answerCode = 0;
    std::vector<SmtpResult::Refusal> refused;

    explicit Exchange(std::string_view text, const std::atomic<bool> &stop_)
        : unsent(text), stop(stop_) {}
    void sentCommand(std::string_view command);
    void gotLine(std::string_view line);
};

void Exchange::sentCommand(std::string_view command) {
    if (command.starts_with("QUIT")) {
        aboutRecipient = false;  // comes after a failure, too, whose answer stays
        return;
    }
    aboutRecipient = command.starts_with("RCPT TO:");
    recipients += aboutRecipient ? 1 : 0;
    answer.clear();
    answerCode = 0;
}

/// A line of an answer: the code, "-" when more lines follow, the text.
void Exchange::gotLine(std::string_view line) {
    constexpr std::size_t kCodeLength = 3;
    constexpr std::size_t kLongestAnswer = 300;
    line = line.substr(0, line.find_first_of("\r\n"));
    const auto code = readNumber<int>(line.substr(0, kCodeLength));
    if (!code || *code < 400 || *code > 599) {
        return;
    }
    answerCode = *code;
    answer += answer.empty() ? line.substr(0, kCodeLength) : "";
    answer += ' ';
    answer += line.substr(std::min(line.size(), kCodeLength + 1));
    answer.resize(std::min(answer.size(), kLongestAnswer));
    // A stranger's words, which go into the journal and onto the bus.
    std::ranges::replace_if(
        answer, [](char c) { return c < ' ' || c > '~'; }, '?');
    const bool isLast = line.size() == kCodeLength || line[kCodeLength] != '-';
    if (aboutRecipient && isLast) {
        refused.push_back({recipients - 1, answer, code >= 500});
    }
}

std::size_t readText(char *buffer, std::size_t size, std::size_t count, void *self) {
    std::string_view &unsent = static_cast<Exchange *>(self)->unsent;
    const std::size_t length = unsent.copy(buffer, size * count);
    unsent.remove_prefix(length);
    return length;
}

/// The only way to hear of each recipient's answer. Nothing else of what is said here is kept: it
/// holds the password.
int watchTalk(CURL * /*handle*/, curl_infotype type, char *text, std::size_t length, void *self) {
    auto *exchange = static_cast<Exchange *>(self);
    if (type == CURLINFO_HEADER_OUT) {
        exchange->sentCommand({text, length});
    } else if (type == CURLINFO_HEADER_IN) {
        exchange->gotLine({text, length});
    }
    return 0;
}

int askToGoOn(void *self, curl_off_t /*downloadTotal*/, curl_off_t /*downloaded*/,
              curl_off_t /*uploadTotal*/, curl_off_t /*uploaded*/) {
    return static_cast<Exchange *>(self)->stop ? 1 : 0;
}

/// Trusts what OpenSSL trusts: the system's authorities, or what SSL_CERT_FILE names.
CURLcode trustSystem(CURL * /*handle*/, void *context, void * /*self*/) {
    return SSL_CTX_set_default_verify_paths(static_cast<SSL_CTX *>(context)) == 1
               ? CURLE_OK
               : CURLE_SSL_CACERT_BADFILE;
}

template <typename T>
void set(const Transfer &transfer, CURLoption option, T value) {
    curl_easy_setopt(transfer.get(), option, value);
}

/// False when the host's name is none.
bool setAddress(const Transfer &transfer, const MailServer &server) {
    const std::unique_ptr<CURLU, CurlCleanup> url(curl_url());
    const bool isTls = server.security == MailServer::Security::kTls;
    const bool isBareV6 = server.host.find(':') != std::string::npos && server.host[0] != '[';
    const std::string host = isBareV6 ? '[' + server.host + ']' : server.host;
    const std::string port = std::to_string(server.port);
    char *text = nullptr;
    if (curl_url_set(url.get(), CURLUPART_SCHEME, isTls ? "smtps" : "smtp", 0) != CURLUE_OK ||
        curl_url_set(url.get(), CURLUPART_HOST, host.c_str(), 0) != CURLUE_OK ||
        curl_url_set(url.get(), CURLUPART_PORT, port.c_str(), 0) != CURLUE_OK ||
        curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
        return false;
    }
    const std::unique_ptr<char, CurlCleanup> owner(text);
    set(transfer, CURLOPT_URL, text);
    return true;
}

void setServer(const Transfer &transfer, const MailServer &server,
               std::chrono::milliseconds minute) {
    const auto limit = static_cast<long>(server.timeoutMinutes * minute.count());
    set(transfer, CURLOPT_TIMEOUT_MS, limit);
    set(transfer, CURLOPT_CONNECTTIMEOUT_MS, limit);
    set(transfer, CURLOPT_SERVER_RESPONSE_TIMEOUT, std::max(limit / 1000, 1L));
    set(transfer, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    // Mail takes no way that only the environment names.
    set(transfer, CURLOPT_PROXY, "");
    const bool isStartTls = server.security == MailServer::Security::kStartTls;
    set(transfer, CURLOPT_USE_SSL,
        static_cast<long>(isStartTls ? CURLUSESSL_ALL : CURLUSESSL_NONE));
    set(transfer, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(transfer, CURLOPT_CAINFO, static_cast<const char *>(nullptr));
    set(transfer, CURLOPT_CAPATH, static_cast<const char *>(nullptr));
    set(transfer, CURLOPT_SSL_CTX_FUNCTION, &trustSystem);
    if (!server.user.empty()) {
        set(transfer, CURLOPT_USERNAME, server.user.c_str());
        set(transfer, CURLOPT_PASSWORD, server.password.c_str());
    }
}

void setExchange(const Transfer &transfer, Exchange &exchange) {
    set(transfer, CURLOPT_NOSIGNAL, 1L);
    set(transfer, CURLOPT_QUICK_EXIT, 1L);
    set(transfer, CURLOPT_UPLOAD, 1L);
    set(transfer, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(exchange.unsent.size()));
    set(transfer, CURLOPT_READFUNCTION, &readText);
    set(transfer, CURLOPT_READDATA, static_cast<void *>(&exchange));
    set(transfer, CURLOPT_VERBOSE, 1L);
    set(transfer, CURLOPT_DEBUGFUNCTION, &watchTalk);
    set(transfer, CURLOPT_DEBUGDATA, static_cast<void *>(&exchange));
    set(transfer, CURLOPT_NOPROGRESS, 0L);
    set(transfer, CURLOPT_XFERINFOFUNCTION, &askToGoOn);
    set(transfer, CURLOPT_XFERINFODATA, static_cast<void *>(&exchange));
    set(transfer, CURLOPT_ERRORBUFFER, exchange.error.data());
    set(transfer, CURLOPT_MAIL_RCPT_ALLLOWFAILS, 1L);
}

TextList bracketed(const std::vector<MailAddress> &recipients) {
    TextList list;
    for (const MailAddress &recipient : recipients) {
        const std::string text = '<' + recipient.address + '>';
        if (curl_slist *longer = curl_slist_append(list.get(), text.c_str())) {
            [[maybe_unused]] curl_slist *same = list.release();
            list.reset(longer);
        }
    }
    return list;
}

std::string problemText(CURLcode code, const MailServer &server, const Exchange &exchange) {
    const std::string name = "The mail server " + server.host;
    const std::string said = exchange.answer.empty() ? "" : ": " + exchange.answer;
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return name + " is not known";
        case CURLE_COULDNT_CONNECT:
            return name + " cannot be reached on port " + std::to_string(server.port);
        case CURLE_OPERATION_TIMEDOUT:
            return name + " did not answer in time";
        case CURLE_LOGIN_DENIED:
            return name + " refused the user name or the password" + said;
        case CURLE_USE_SSL_FAILED:
            return name + " does not offer STARTTLS";
        case CURLE_PEER_FAILED_VERIFICATION:
            return "The certificate of the mail server " + server.host + " is not trusted";
        case CURLE_ABORTED_BY_CALLBACK:
            return "The service is stopping";
        default:
            break;
    }
    if (!exchange.refused.empty() && exchange.answer == exchange.refused.back().answer) {
        return name + " refused all recipients" + said;
    }
    if (!said.empty()) {
        return name + " refused the e-mail" + said;
    }
    const std::string detail = exchange.error.data();
    return "The e-mail could not be sent: " + (detail.empty() ? curl_easy_strerror(code) : detail);
}

}  // namespace

SmtpResult deliverMail(const MailServer &server, const std::string &sender,
                       const std::vector<MailAddress> &recipients, std::string_view text,
                       std::chrono::milliseconds minute, const std::atomic<bool> &stop) {
    static std::once_flag prepared;
    std::call_once(prepared, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    Exchange exchange(text, stop);
    const Transfer transfer(curl_easy_init());
    SmtpResult result;
    if (!transfer || !setAddress(transfer, server)) {
        result.problem = "The name of the mail server is not valid: " + server.host;
        return result;
    }
    const TextList list = bracketed(recipients);
    setServer(transfer, server, minute);
    setExchange(transfer, exchange);
    set(transfer, CURLOPT_MAIL_FROM, sender.c_str());
    set(transfer, CURLOPT_MAIL_RCPT, list.get());
    const CURLcode code = curl_easy_perform(transfer.get());
    if (code != CURLE_OK) {
        result.problem = problemText(code, server, exchange);
        result.forGood = exchange.answerCode >= 500;
    }
    result.refused = std::move(exchange.refused);
    return result;
}

}  // namespace quorbel
