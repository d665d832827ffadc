#pragma once

#include "core/ServiceState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What the service says came of one action or export; see docs/protocol.md.
struct ServiceResult {
    std::string name;
    std::uint64_t done = 0;
    std::int64_t doneSeconds = 0;  ///< since 1970, of the last one; 0 for never
    std::uint64_t failed = 0;
    std::string problem;  ///< the last one
    std::int64_t failedSeconds = 0;
};

/// Of the property "Actions" or "Exports"; nothing when the service does not know it.
std::optional<std::vector<ServiceResult>> serviceResults(const ServiceReport &report,
                                                         std::string_view property);

}  // namespace quorbel
