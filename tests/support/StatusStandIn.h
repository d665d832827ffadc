#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct sd_bus;

namespace quorbel::testing {

/// Stands in for a service that says how it is: owns its name on the bus that
/// DBUS_SYSTEM_BUS_ADDRESS names and has its properties, on a thread of its own. Safe to use from
/// any thread.
class StatusStandIn {
public:
    struct Refusal {
        std::string sender;
        std::string reason;
        std::string detail;
        std::int64_t seconds = 0;
        std::uint64_t count = 0;
    };
    struct Result {
        std::string name;
        std::uint64_t done = 0;
        std::int64_t doneSeconds = 0;
        std::uint64_t failed = 0;
        std::string problem{};
        std::int64_t failedSeconds = 0;
    };
    struct Status {
        std::string version = "1.1";
        std::int64_t since = 1'700'000'000;
        std::vector<std::pair<std::string, std::uint64_t>> counters{};
        std::vector<std::pair<std::string, std::uint16_t>> listeners{{"udp", 514}, {"tcp", 514}};
        std::vector<Refusal> refusals{};
        std::vector<Result> actions{};
        std::vector<Result> exports{};
    };
    enum class OnQuestion { kTell, kKeepSilent, kRefuse, kFail };

    /// Returns when the name is owned. A service that `isTooOld` has no properties.
    explicit StatusStandIn(bool isTooOld = false);
    /// Gives the name back before it returns.
    ~StatusStandIn();
    StatusStandIn(const StatusStandIn &) = delete;
    StatusStandIn &operator=(const StatusStandIn &) = delete;

    void change(const std::function<void(Status &status)> &change);
    void onQuestion(OnQuestion reaction);
    /// How often it was asked so far.
    [[nodiscard]] int questions() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

/// Has a connection that owns the service's name answer with a status, which outlives it. For the
/// thread that runs the connection. Negative when that fails.
int serveStatus(sd_bus *bus, const StatusStandIn::Status &status);

}  // namespace quorbel::testing
