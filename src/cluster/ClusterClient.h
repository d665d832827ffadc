#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Where a cluster is, and as whom it is asked. A plain value.
struct ClusterConnection {
    std::vector<std::string> servers;  ///< "https://host:port", no slash at the end
    std::string user{};                ///< empty: the server's default, without a password
    std::string passwordFile{};        ///< its first line, read for each request; empty: none
    std::string authorityFile{};       ///< PEM; empty: the system's

    // How long to wait for a server, each of them.
    std::chrono::milliseconds toConnect{10'000};
    std::chrono::milliseconds toInsert{120'000};   ///< all of it, its answer included
    std::chrono::milliseconds toSayMore{300'000};  ///< of a query, while nothing comes
};

/// Speaks to the servers of one cluster, over HTTP (TLS 1.2 or later for https). Requests go to the
/// one that answered last; when it fails, or answers with an error, to the others, each once.
/// Connections stay open. For one thread.
class ClusterClient {
public:
    /// Given an answer's bytes as they come; false when it has had enough.
    using Handler = std::function<bool(std::string_view bytes)>;

    explicit ClusterClient(ClusterConnection connection);
    ~ClusterClient();
    ClusterClient(const ClusterClient &) = delete;
    ClusterClient &operator=(const ClusterClient &) = delete;

    // Each gives what is in the way, as one line that names the server, or nothing: then the server
    // has said that all is done. Ends within about a second once `stop` is set.

    /// Has the `rows` inserted, which go packed. Whether a server that did not answer has done it
    /// nobody knows.
    std::string insert(const std::string &statement, std::string_view rows,
                       const std::atomic<bool> &stop);
    /// Has a statement carried out. An answer that has begun to come is not asked for elsewhere. An
    /// error that the server meets then stands in the middle of it: see ClusterQuery.h.
    std::string query(const std::string &statement, const Handler &onBytes,
                      const std::atomic<bool> &stop);

private:
    struct Transfer;
    struct Exchange;

    std::string tryServers(Exchange &exchange);
    std::string tryServer(const std::string &server, Exchange &exchange);
    std::string prepare(const std::string &server, Exchange &exchange);
    void setBody(Exchange &exchange);
    void setPackedBody(Exchange &exchange);
    void setLimits(const Exchange &exchange);
    void setTrust();
    void watch(Exchange &exchange);
    std::string logIn();

    const ClusterConnection m_connection;
    std::size_t m_server = 0;  ///< the one that answered last
    std::unique_ptr<Transfer> m_transfer;
};

}  // namespace quorbel
