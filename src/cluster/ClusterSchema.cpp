#include "cluster/ClusterSchema.h"

#include "cluster/ClusterRows.h"

#include <algorithm>

namespace quorbel {

namespace {

std::string fullName(const ClusterPlace &place, std::string_view ending = "") {
    return place.database + '.' + place.table + std::string(ending);
}

/// Repeats of a row differ in nothing, and lie in the same partition: the engine keeps one.
constexpr std::string_view kRows = R"( (
    time      DateTime('UTC'),
    severity  UInt8,
    facility  String,
    priority  String,
    host      String,
    message   String,
    collector String,
    number    UInt64
))";
constexpr std::string_view kEngine = R"(
ENGINE = ReplacingMergeTree
PARTITION BY toYYYYMM(time)
ORDER BY (time, collector, number);
)";

std::string headFor(std::size_t servers) {
    return servers > 1 ? "-- Stored events on " + std::to_string(servers) +
                             " shards. To be run on each of the servers.\n"
                       : "-- Stored events on one server.\n";
}

std::string tableOf(const std::string &name) {
    return "\n-- severity: 0 (Emergency) to 7 (Debug), 8 for none. What is inserted twice has the\n"
           "-- same collector and number.\nCREATE TABLE IF NOT EXISTS " +
           name + std::string(kRows) + std::string(kEngine);
}

std::string viewOf(const ClusterPlace &place) {
    return "\n-- Each event exactly once.\nCREATE VIEW IF NOT EXISTS " + clusterView(place) +
           " AS SELECT * FROM " + fullName(place) + " FINAL;\n";
}

std::string shardsOf(const std::vector<std::string> &hosts) {
    std::string text = "\n-- In each server's configuration:\n-- <remote_servers><quorbel>\n";
    for (const std::string &host : hosts) {
        text +=
            "--   <shard><replica><host>" + host + "</host><port>9000</port></replica></shard>\n";
    }
    return text + "-- </quorbel></remote_servers>\n";
}

/// The same row always goes to the same shard, and most batches to a single one.
std::string distributionOf(const ClusterPlace &place) {
    return "\nCREATE TABLE IF NOT EXISTS " + fullName(place) + std::string(kRows) +
           "\nENGINE = Distributed(quorbel, " + place.database + ", " + place.table +
           "_shard,\n    cityHash64(collector, intDiv(number, 1000000)));\n";
}

std::string retentionOf(const std::string &name) {
    return "\n-- How long rows are kept, a year for example. Servers from 19.6 on do it "
           "themselves:\n"
           "-- ALTER TABLE " +
           name +
           " MODIFY TTL time + INTERVAL 12 MONTH;\n"
           "-- For older ones, a month at a time:\n-- ALTER TABLE " +
           name + " DROP PARTITION 202601;\n";
}

}  // namespace

std::string clusterView(const ClusterPlace &place) {
    return fullName(place, "_once");
}

std::string clusterInsert(const ClusterPlace &place) {
    return "INSERT INTO " + fullName(place) + " (" + std::string(kClusterColumns) +
           ") FORMAT RowBinary";
}

std::string clusterSchema(const ClusterPlace &place, const std::vector<std::string> &hosts) {
    const bool isSharded = hosts.size() > 1;
    const std::string table = fullName(place, isSharded ? "_shard" : "");
    return headFor(hosts.size()) + (isSharded ? shardsOf(hosts) : "") +
           "\nCREATE DATABASE IF NOT EXISTS " + place.database + ";\n" + tableOf(table) +
           (isSharded ? distributionOf(place) : "") + viewOf(place) + retentionOf(table);
}

std::vector<std::string> hostsOfServers(const std::vector<std::string> &servers) {
    std::vector<std::string> hosts;
    for (const std::string &server : servers) {
        const std::size_t scheme = server.find("://");
        std::string host = scheme == std::string::npos ? server : server.substr(scheme + 3);
        const bool isBracketed = host.starts_with('[');
        host = isBracketed ? host.substr(1, host.find(']') - 1) : host.substr(0, host.find(':'));
        if (std::ranges::find(hosts, host) == hosts.end()) {
            hosts.push_back(host);
        }
    }
    return hosts;
}

}  // namespace quorbel
