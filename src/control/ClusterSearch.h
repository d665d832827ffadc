#pragma once

#include "cluster/ClusterQuery.h"
#include "common/ServiceConfiguration.h"
#include "control/ExitCode.h"
#include "control/LogSearch.h"
#include "core/EventQuery.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace quorbel {

/// Finds what a filter means in a cluster, the oldest first, as searchFiles() does in files: the
/// cluster leaves out what it can, and the window's matcher looks at the rest. kNotThere when the
/// cluster cannot be asked.
ExitCode searchCluster(const ClusterSettings &cluster, const EventQuery &query,
                       const LogSearch::Handler &onFound);

/// The same for a filter without texts, counted by the cluster: the handler gets an event for each
/// quarter of an hour, priority and host, and how many there are.
ExitCode countCluster(const ClusterSettings &cluster, const EventQuery &query,
                      const std::function<void(const LogLine &event, EventRating rating,
                                               std::uint64_t count)> &onFound);

/// What a cluster can be asked of a filter: whatever the filter means meets that, too. It knows
/// neither ratings nor how dates are shown (`dateFormat`, the setting), in which texts are looked
/// for as well; expressions, and hosts named with "*" and "?", are left to the matcher.
ClusterFilter clusterFilterOf(const EventQuery &query, std::string_view dateFormat);

}  // namespace quorbel
