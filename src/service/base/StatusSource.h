#pragma once

#include "service/base/Counters.h"
#include "service/base/LastResult.h"
#include "service/base/OutputState.h"
#include "service/base/Refusals.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace quorbel {

/// Where the service listens.
struct Listener {
    std::string_view protocol;  ///< "udp", "tcp" or "tls"
    std::uint16_t port;
};

/// What the service can say of itself at once. Loop thread only.
class StatusSource {
public:
    StatusSource() = default;
    virtual ~StatusSource() = default;
    StatusSource(const StatusSource &) = delete;
    StatusSource &operator=(const StatusSource &) = delete;

    /// When it started, in seconds since 1970.
    [[nodiscard]] virtual std::int64_t startTime() const = 0;
    [[nodiscard]] virtual const Counters &currentCounters() = 0;
    [[nodiscard]] virtual std::vector<Listener> listeners() const = 0;
    [[nodiscard]] virtual const Refusals &refusals() const = 0;
    /// Of the actions that have something to do, in the order of the settings, by their names.
    [[nodiscard]] virtual std::vector<NamedResult> actionResults() const = 0;
    /// Of the exports that are on: "text", "database".
    [[nodiscard]] virtual std::vector<NamedResult> exportResults() const = 0;
    /// Of the outputs that are configured, in the order of the configuration.
    [[nodiscard]] virtual std::vector<OutputState> outputStates() const = 0;
};

}  // namespace quorbel
