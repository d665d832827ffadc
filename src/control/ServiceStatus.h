#pragma once

#include "control/ExitCode.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quorbel {

/// What the service says of itself; see docs/protocol.md.
struct ServiceStatus {
    struct Refusal {
        std::string sender;
        std::string reason;
        std::string detail;
        std::int64_t seconds = 0;  ///< since 1970, as is `since`
        std::uint64_t count = 0;
    };

    /// Of something that the service does by itself: an action, an export.
    struct Result {
        std::string name;
        std::uint64_t done = 0;
        std::int64_t doneSeconds = 0;  ///< of the last one; 0: never
        std::uint64_t failed = 0;
        std::string problem;  ///< the last one
        std::int64_t failedSeconds = 0;
    };

    /// Of an output.
    struct OutputState {
        std::string name;
        std::string kind;
        std::uint64_t sent = 0;
        std::uint64_t removedUnsent = 0;
        std::uint64_t lagEvents = 0;
        std::int64_t lagSeconds = 0;
        double rate = 0;
        std::string problem;  ///< the last one
        std::int64_t problemSeconds = 0;
    };

    std::string version;
    std::int64_t since = 0;
    std::vector<std::pair<std::string, std::uint64_t>> counters;
    std::vector<std::pair<std::string, std::uint16_t>> listeners;
    std::vector<Refusal> refusals;
    // Nothing when the service is too old to tell them.
    std::optional<std::vector<Result>> actions;
    std::optional<std::vector<Result>> exports;
    std::optional<std::vector<OutputState>> outputs;

    /// What people read, or an object of JSON; ended by a line feed.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string json() const;
};

/// Why there is no status.
struct StatusProblem {
    ExitCode code;
    std::string text;
};

/// Asks the service over the system bus, without having it started, and waits for the answer.
std::variant<ServiceStatus, StatusProblem> askForStatus(std::chrono::seconds patience);

}  // namespace quorbel
