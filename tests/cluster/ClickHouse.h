#pragma once

#include "cluster/ClusterClient.h"
#include "support/TestAuthority.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorbel::testing {

/// The real column store as a child process, which dies with the thread that made it; on ports of
/// its own of 127.0.0.1, with all that it stores in a folder. Its user "quorbel" has the password
/// "secret".
class ClickHouse {
public:
    /// Whether it was unpacked (unpack_test.sh).
    static bool isThere();
    static constexpr const char *kMissing = "ClickHouse cannot be downloaded here";

    explicit ClickHouse(std::filesystem::path folder);
    /// Kills it if it still runs.
    ~ClickHouse();
    ClickHouse(const ClickHouse &) = delete;
    ClickHouse &operator=(const ClickHouse &) = delete;

    /// To be called before start(): the servers of the sharded table, this one among them.
    void setShards(const std::vector<std::uint16_t> &ports) { m_shards = ports; }
    /// The same: it also speaks HTTPS, on a port of its own, with that certificate.
    void setIdentity(const TestAuthority::Issued &identity) { m_identity = identity; }
    /// Starts it and waits until it answers; once more after kill(). False when it does not.
    bool start();
    /// Ends it on the spot (SIGKILL), as a crash would.
    void kill();
    /// SIGSTOP: it says nothing any more until SIGCONT.
    void signal(int number) const;

    /// What it has used of the processors since start().
    [[nodiscard]] double processorSeconds() const;

    [[nodiscard]] std::uint16_t httpPort() const { return m_httpPort; }
    [[nodiscard]] std::uint16_t httpsPort() const { return m_httpsPort; }
    [[nodiscard]] std::uint16_t shardPort() const { return m_tcpPort; }
    [[nodiscard]] std::string address() const;
    [[nodiscard]] ClusterConnection connection() const;
    /// What it answers to a statement, without the last line feed, or "! " and the problem.
    [[nodiscard]] std::string ask(const std::string &sql) const;

    /// What its own client says when it has read all of a file, in several statements or one.
    [[nodiscard]] std::string runClient(const std::filesystem::path &input,
                                        std::vector<std::string> arguments) const;

private:
    void writeConfiguration() const;
    [[nodiscard]] std::string tlsConfiguration() const;

    const std::filesystem::path m_folder;
    const std::uint16_t m_httpPort;
    const std::uint16_t m_httpsPort;
    const std::uint16_t m_tcpPort;
    std::vector<std::uint16_t> m_shards;
    std::optional<TestAuthority::Issued> m_identity;
    pid_t m_pid = -1;
};

/// The answer of a server to a statement, as ClickHouse::ask() has it.
std::string askCluster(const ClusterConnection &connection, const std::string &sql);

}  // namespace quorbel::testing
