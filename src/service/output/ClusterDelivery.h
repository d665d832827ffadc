#pragma once

#include "cluster/ClusterClient.h"
#include "cluster/ClusterRows.h"
#include "common/ServiceConfiguration.h"
#include "service/output/EventFeed.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quorbel {

/// Hands pieces of a feed to a cluster: each is one batch of rows, named by the collector and the
/// numbers of their lines. The same piece handed over again, after whatever went wrong, is the same
/// rows, which the cluster's view has once. For one thread.
class ClusterDelivery {
public:
    /// `collector` is what this service is called in the cluster.
    /// `toInsert` is that of ClusterConnection.
    ClusterDelivery(const ClusterSettings &settings, const std::string &collector,
                    std::chrono::milliseconds toInsert = ClusterConnection().toInsert);

    /// The piece's events that the filter means are in the cluster; or what is in the way, as one
    /// line. Waits for the servers, as long as they may take; comes back within about a second once
    /// `stop` is set.
    std::optional<std::string> deliver(const EventFeed::Piece &piece,
                                       const std::atomic<bool> &stop);
    /// How many events the last piece had for the cluster.
    [[nodiscard]] std::size_t lastCount() const { return m_rows.count(); }

private:
    const OutputFilter m_filter;
    const std::string m_statement;
    ClusterClient m_client;
    ClusterRows m_rows;  ///< kept for its memory
};

}  // namespace quorbel
