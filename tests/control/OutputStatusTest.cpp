#include "common/LegibleText.h"
#include "control/ControlProcess.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"
#include "service/bus/StatusProperties.h"
#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// A service of which only the outputs matter.
class OutputsOnly : public StatusSource {
public:
    explicit OutputsOnly(std::vector<OutputState> states) : m_states(std::move(states)) {}

    [[nodiscard]] std::int64_t startTime() const override { return 1'700'000'000; }
    [[nodiscard]] const Counters &currentCounters() override { return m_counters; }
    [[nodiscard]] std::vector<Listener> listeners() const override { return {}; }
    [[nodiscard]] const Refusals &refusals() const override { return m_refusals; }
    [[nodiscard]] std::vector<NamedResult> actionResults() const override { return {}; }
    [[nodiscard]] std::vector<NamedResult> exportResults() const override { return {}; }
    [[nodiscard]] std::vector<OutputState> outputStates() const override { return m_states; }

private:
    std::vector<OutputState> m_states;
    Counters m_counters;
    Refusals m_refusals;
};

/// Its properties under the service's name, served on a thread of its own.
class ServedStatus {
public:
    explicit ServedStatus(std::vector<OutputState> states)
        : m_source(std::move(states)), m_bus(bus::openSystemBus()) {
        EXPECT_GE(m_properties.addTo(m_bus.get()), 0);
        EXPECT_GE(sd_bus_request_name(m_bus.get(), bus::kServiceName, 0), 0);
        m_thread = std::thread([this] {
            while (!m_hasEnded) {
                while (sd_bus_process(m_bus.get(), nullptr) > 0) {
                }
                sd_bus_wait(m_bus.get(), 10'000);
            }
        });
    }
    ~ServedStatus() {
        m_hasEnded = true;
        m_thread.join();
    }
    ServedStatus(const ServedStatus &) = delete;
    ServedStatus &operator=(const ServedStatus &) = delete;

private:
    OutputsOnly m_source;
    StatusProperties m_properties{m_source};
    bus::BusPointer m_bus;
    std::atomic<bool> m_hasEnded = false;
    std::thread m_thread;
};

struct OutputStatusTest : ::testing::Test {
    /// What quorbelctl says of such a service.
    [[nodiscard]] std::string said(std::vector<OutputState> states,
                                   std::vector<std::string> arguments) const {
        const ServedStatus served(std::move(states));
        const auto result =
            testing::runControl({folder.path(), bus.address()}, std::move(arguments));
        EXPECT_EQ(result.status, 0) << result.complaint;
        return result.output;
    }

    testing::TemporaryFolder folder;
    testing::PrivateBus bus;
};

/// An output with everything in it that can be there.
OutputState busyOutput() {
    OutputState state;
    state.name = "siem";
    state.kind = "syslog";
    state.sent = 18'446'744'073'709'551'615U;
    state.removedUnsent = 3;
    state.lagEvents = 12'000'000'000;
    state.lagSeconds = 4'000'000'000;
    state.rate = 20'000.26;
    state.problem = "siem.example.org: Connection \"refused\"\x1b";
    state.problemSeconds = 1'700'000'000;
    return state;
}

OutputState idleOutput() {
    OutputState state;
    state.name = "main";
    state.kind = "cluster";
    return state;
}

TEST_F(OutputStatusTest, TheStatusSaysHowFarOutputsHaveCome) {
    EXPECT_THAT(said({busyOutput(), idleOutput()}, {"status"}),
                HasSubstr("\nOutputs\n18446744073709551615  siem (syslog)  20000.3 a second  "
                          "12000000000 wait, the oldest for 4000000000 s  removed unsent 3  "
                          "last problem 2023-11-14 22:13:20: "
                          "siem.example.org: Connection \"refused\"?\n"
                          "           0  main (cluster)  0.0 a second  nothing waits\n"));
    EXPECT_THAT(said({}, {"status"}), Not(HasSubstr("Outputs")));
}

TEST_F(OutputStatusTest, ItSaysSoInJson) {
    EXPECT_THAT(said({busyOutput(), idleOutput()}, {"status", "--json"}),
                HasSubstr("\"exports\":[],\"outputs\":["
                          "{\"name\":\"siem\",\"kind\":\"syslog\",\"sent\":18446744073709551615,"
                          "\"removedUnsent\":3,\"lagEvents\":12000000000,"
                          "\"lagSeconds\":4000000000,\"rate\":20000.3,"
                          "\"problem\":\"siem.example.org: Connection \\\"refused\\\"?\","
                          "\"problemTime\":1700000000},"
                          "{\"name\":\"main\",\"kind\":\"cluster\",\"sent\":0,\"removedUnsent\":0,"
                          "\"lagEvents\":0,\"lagSeconds\":0,\"rate\":0.0,\"problem\":\"\","
                          "\"problemTime\":0}]}\n"));
    EXPECT_THAT(said({}, {"status", "--json"}), HasSubstr("\"outputs\":[]}\n"));
}

TEST_F(OutputStatusTest, ARateThatIsNoneMakesNoBrokenJson) {
    for (const double rate : {std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(), 1e300, -1.0}) {
        OutputState state = idleOutput();
        state.rate = rate;
        EXPECT_THAT(said({state}, {"status", "--json"}), HasSubstr("\"rate\":0.0,")) << rate;
    }
}

TEST_F(OutputStatusTest, AProblemIsNeverLongerThanIsTold) {
    OutputState state = idleOutput();
    state.problem = std::string(100'000, 'x');
    const std::string text = said({state}, {"status"});
    EXPECT_THAT(text, HasSubstr(": " + std::string(kMostToldBytes, 'x') + "...\n"));
}

}  // namespace
}  // namespace quorbel
