#pragma once

#include "common/ServiceConfiguration.h"
#include "control/ExitCode.h"
#include "control/LogSearch.h"
#include "control/OptionReader.h"
#include "core/EventQuery.h"

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace quorbel {

/// Where `find` and `stats` look for events: in the log files, or in a cluster of the service's
/// configuration.
class EventSource {
public:
    /// They write to this object, which outlives them.
    std::vector<Option> options();

    // What a filter means there, and how to end: kNothing when nothing was found. What is wrong is
    // said on the standard error.

    /// The events, the oldest first.
    [[nodiscard]] ExitCode search(const EventQuery &query, const LogSearch::Handler &onFound) const;
    /// The same for who only counts them: events of one quarter of an hour, priority and host, in
    /// any order, may come as one of them with their count.
    using CountHandler =
        std::function<void(const LogLine &event, EventRating rating, std::uint64_t count)>;
    [[nodiscard]] ExitCode count(const EventQuery &query, const CountHandler &onFound) const;

private:
    using Choice = std::variant<ClusterSettings, ExitCode>;
    [[nodiscard]] Choice cluster() const;

    bool m_asksCluster = false;
    std::string m_clusterName;
    std::string m_configuration = kServiceConfigurationFile;
};

}  // namespace quorbel
