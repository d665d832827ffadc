#include "cluster/ClusterClient.h"

#include "cluster/Gzip.h"
#include "common/LegibleText.h"
#include "platform/Files.h"

#include <curl/curl.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>
#include <utility>

namespace quorbel {

namespace {

/// Of what a server says of an error.
constexpr std::size_t kMostComplaint = 2000;
constexpr long kGood = 200;

struct CurlCleanup {
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    void operator()(char *text) const { curl_free(text); }
};
using Handle = std::unique_ptr<CURL, CurlCleanup>;
using TextList = std::unique_ptr<curl_slist, CurlCleanup>;

void append(TextList &list, const char *text) {
    if (curl_slist *longer = curl_slist_append(list.get(), text)) {
        [[maybe_unused]] curl_slist *same = list.release();
        list.reset(longer);
    }
}

/// Trusts what OpenSSL trusts: the system's authorities, or what SSL_CERT_FILE names.
CURLcode trustSystem(CURL * /*handle*/, void *context, void * /*self*/) {
    return SSL_CTX_set_default_verify_paths(static_cast<SSL_CTX *>(context)) == 1
               ? CURLE_OK
               : CURLE_SSL_CACERT_BADFILE;
}

/// The first line of a text, as one that may be shown.
std::string firstLine(std::string_view text) {
    return legible(text.substr(0, text.find_first_of("\r\n")), kMostToldBytes);
}

std::string reasonOf(CURLcode code, std::string_view detail) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return "its name is not known";
        case CURLE_OPERATION_TIMEDOUT:
            return "it did not answer in time";
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
            return "the connection broke";
        default:
            return detail.empty() ? curl_easy_strerror(code) : firstLine(detail);
    }
}

long milliseconds(std::chrono::milliseconds time) {
    return static_cast<long>(time.count());
}

}  // namespace

struct ClusterClient::Transfer {
    Handle handle{curl_easy_init()};
    TextList headers;

    template <typename T>
    void set(CURLoption option, T value) {
        curl_easy_setopt(handle.get(), option, value);
    }
};

/// A request, and what its callbacks share.
struct ClusterClient::Exchange {
    std::string path{};                ///< and what follows it in the address
    std::string_view body{};           ///< outlives the exchange
    GzipReader *packed = nullptr;      ///< of an insert, in place of the body
    const Handler *onBytes = nullptr;  ///< nothing: nobody wants the answer
    const std::atomic<bool> &stop;

    CURL *handle = nullptr;
    bool hasBegun = false;  ///< the handler has got something
    bool isEnough = false;  ///< for the handler
    std::string complaint{};
    std::array<char, CURL_ERROR_SIZE> error{};

    [[nodiscard]] long status() const {
        long status = 0;
        curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
        return status;
    }
    /// False to end the transfer.
    bool take(std::string_view bytes) {
        if (status() != kGood) {
            complaint += bytes.substr(0, kMostComplaint - complaint.size());
            return complaint.size() < kMostComplaint;
        }
        if (onBytes == nullptr) {
            return true;
        }
        hasBegun = true;
        isEnough = !(*onBytes)(bytes);
        return !isEnough;
    }
    [[nodiscard]] std::string problem(CURLcode code) const;

    static std::size_t giveBytes(char *bytes, std::size_t size, std::size_t count, void *self) {
        return static_cast<Exchange *>(self)->packed->read(bytes, size * count);
    }
    /// Called when a connection that was kept turns out to be gone.
    static int beginAnew(void *self, curl_off_t offset, int /*origin*/) {
        static_cast<Exchange *>(self)->packed->rewind();
        return offset == 0 ? CURL_SEEKFUNC_OK : CURL_SEEKFUNC_FAIL;
    }
    static std::size_t takeBytes(char *bytes, std::size_t size, std::size_t count, void *self) {
        const bool goesOn = static_cast<Exchange *>(self)->take({bytes, size * count});
        return goesOn ? size * count : 0;
    }
    static int askToGoOn(void *self, curl_off_t /*downloadTotal*/, curl_off_t /*downloaded*/,
                         curl_off_t /*uploadTotal*/, curl_off_t /*uploaded*/) {
        return static_cast<Exchange *>(self)->stop ? 1 : 0;
    }
};

std::string ClusterClient::Exchange::problem(CURLcode code) const {
    if (isEnough) {
        return "";
    }
    const long answer = status();
    if (answer != 0 && answer != kGood) {
        return complaint.empty() ? "it answers with HTTP status " + std::to_string(answer)
                                 : firstLine(complaint);
    }
    if (code == CURLE_OK) {
        return "";
    }
    return stop ? "stopped" : reasonOf(code, error.data());
}

ClusterClient::ClusterClient(ClusterConnection connection) : m_connection(std::move(connection)) {
    static std::once_flag prepared;
    std::call_once(prepared, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_transfer = std::make_unique<Transfer>();
}

ClusterClient::~ClusterClient() = default;

std::string ClusterClient::insert(const std::string &statement, std::string_view rows,
                                  const std::atomic<bool> &stop) {
    const std::unique_ptr<char, CurlCleanup> escaped(curl_easy_escape(
        m_transfer->handle.get(), statement.data(), static_cast<int>(statement.size())));
    GzipReader packed(rows);
    // Who is told that rows are stored may rely on it that they are on their shards.
    Exchange exchange{.path = "/?insert_distributed_sync=1&query=" + std::string(escaped.get()),
                      .packed = &packed,
                      .stop = stop};
    return tryServers(exchange);
}

std::string ClusterClient::query(const std::string &statement, const Handler &onBytes,
                                 const std::atomic<bool> &stop) {
    Exchange exchange{.path = "/", .body = statement, .onBytes = &onBytes, .stop = stop};
    return tryServers(exchange);
}

std::string ClusterClient::tryServers(Exchange &exchange) {
    std::string problem = "There is no server";
    for (std::size_t i = 0; i < m_connection.servers.size(); ++i) {
        problem = tryServer(m_connection.servers[m_server], exchange);
        if (problem.empty() || exchange.hasBegun || exchange.stop) {
            break;
        }
        m_server = (m_server + 1) % m_connection.servers.size();
    }
    return problem;
}

std::string ClusterClient::tryServer(const std::string &server, Exchange &exchange) {
    exchange.complaint.clear();
    exchange.error = {};
    std::string problem = prepare(server, exchange);
    if (problem.empty()) {
        problem = exchange.problem(curl_easy_perform(m_transfer->handle.get()));
    }
    return problem.empty() ? "" : server + ": " + problem;
}

std::string ClusterClient::prepare(const std::string &server, Exchange &exchange) {
    curl_easy_reset(m_transfer->handle.get());  // connections stay
    m_transfer->set(CURLOPT_URL, (server + exchange.path).c_str());
    m_transfer->set(CURLOPT_PROTOCOLS_STR, "http,https");
    // Events take no way that only the environment names.
    m_transfer->set(CURLOPT_PROXY, "");
    m_transfer->set(CURLOPT_NOSIGNAL, 1L);
    setBody(exchange);
    setLimits(exchange);
    setTrust();
    watch(exchange);
    return logIn();
}

void ClusterClient::setBody(Exchange &exchange) {
    m_transfer->headers.reset();
    append(m_transfer->headers, "Expect:");  // it would cost a second way there and back
    append(m_transfer->headers, "Content-Type: application/octet-stream");
    m_transfer->set(CURLOPT_POST, 1L);
    if (exchange.packed != nullptr) {
        setPackedBody(exchange);
    } else {
        m_transfer->set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(exchange.body.size()));
        m_transfer->set(CURLOPT_POSTFIELDS, exchange.body.data());
    }
    m_transfer->set(CURLOPT_HTTPHEADER, m_transfer->headers.get());
}

/// The server unpacks and reads while the rest is being packed.
void ClusterClient::setPackedBody(Exchange &exchange) {
    exchange.packed->rewind();
    append(m_transfer->headers, "Content-Encoding: gzip");
    append(m_transfer->headers, "Transfer-Encoding: chunked");
    m_transfer->set(CURLOPT_UPLOAD_BUFFERSIZE, 1L << 18U);
    m_transfer->set(CURLOPT_READFUNCTION, &Exchange::giveBytes);
    m_transfer->set(CURLOPT_READDATA, static_cast<void *>(&exchange));
    m_transfer->set(CURLOPT_SEEKFUNCTION, &Exchange::beginAnew);
    m_transfer->set(CURLOPT_SEEKDATA, static_cast<void *>(&exchange));
}

void ClusterClient::setLimits(const Exchange &exchange) {
    m_transfer->set(CURLOPT_CONNECTTIMEOUT_MS, milliseconds(m_connection.toConnect));
    if (exchange.packed != nullptr) {
        m_transfer->set(CURLOPT_TIMEOUT_MS, milliseconds(m_connection.toInsert));
    } else {
        m_transfer->set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        m_transfer->set(CURLOPT_LOW_SPEED_TIME,
                        std::max(milliseconds(m_connection.toSayMore) / 1000, 1L));
    }
}

void ClusterClient::setTrust() {
    const std::string &authority = m_connection.authorityFile;
    m_transfer->set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    m_transfer->set(CURLOPT_CAPATH, static_cast<const char *>(nullptr));
    m_transfer->set(CURLOPT_CAINFO, authority.empty() ? nullptr : authority.c_str());
    if (authority.empty()) {
        m_transfer->set(CURLOPT_SSL_CTX_FUNCTION, &trustSystem);
    }
}

void ClusterClient::watch(Exchange &exchange) {
    exchange.handle = m_transfer->handle.get();
    m_transfer->set(CURLOPT_WRITEFUNCTION, &Exchange::takeBytes);
    m_transfer->set(CURLOPT_WRITEDATA, static_cast<void *>(&exchange));
    m_transfer->set(CURLOPT_NOPROGRESS, 0L);
    m_transfer->set(CURLOPT_XFERINFOFUNCTION, &Exchange::askToGoOn);
    m_transfer->set(CURLOPT_XFERINFODATA, static_cast<void *>(&exchange));
    m_transfer->set(CURLOPT_ERRORBUFFER, exchange.error.data());
}

std::string ClusterClient::logIn() {
    if (m_connection.user.empty()) {
        return "";
    }
    std::string password;
    if (!m_connection.passwordFile.empty()) {
        const auto text = readFile(m_connection.passwordFile);
        if (!text) {
            return "the password cannot be read from " + m_connection.passwordFile;
        }
        password = text->substr(0, text->find_first_of("\r\n"));
    }
    m_transfer->set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
    m_transfer->set(CURLOPT_USERNAME, m_connection.user.c_str());
    m_transfer->set(CURLOPT_PASSWORD, password.c_str());
    return "";
}

}  // namespace quorbel
