#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Where the events are in a cluster: names that are fit for SQL.
struct ClusterPlace {
    std::string database = "quorbel";
    std::string table = "events";  ///< rows are inserted into it
};

/// The view of a place that holds each event exactly once, whatever was sent twice: the table's
/// name and "_once".
std::string clusterView(const ClusterPlace &place);

/// What makes a collector's rows, in the format of ClusterRows, part of the table.
std::string clusterInsert(const ClusterPlace &place);

/// The SQL that makes the table and its view, for an administrator to read and run on each server
/// (clickhouse-client --multiquery): for one server; or, when there are several `hosts`, for as
/// many shards behind a table of the engine Distributed, with what belongs into each server's
/// configuration as a comment. Says how long rows are kept, as a TTL and without.
std::string clusterSchema(const ClusterPlace &place, const std::vector<std::string> &hosts);

/// The hosts of addresses like "https://host:port", each once, in their order.
std::vector<std::string> hostsOfServers(const std::vector<std::string> &servers);

}  // namespace quorbel
