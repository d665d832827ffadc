#include "core/ServiceState.h"

#include <gtest/gtest.h>

#include <memory>

namespace quorbel {
namespace {

Dictionary properties() {
    return {{"Version", "1.1"},
            {"Since", 1700000000},
            {"Counters", Dictionary{{"received", 7}, {"dropped", UINT64_MAX}}},
            {"Listeners", Array{Array{"udp", 514}, Array{"tls", 6514}}},
            {"Refusals", Array{Array{"10.0.0.7", "filtered", "\"a\"", 1700000001, 3}}},
            {"Later", 1}};
}

TEST(ServiceStateTest, ReadsAReport) {
    const ServiceReport report = readReport(properties());
    EXPECT_EQ(report.version, "1.1");
    EXPECT_EQ(report.since, 1700000000);
    EXPECT_EQ(report.counter("received"), 7U);
    EXPECT_EQ(report.counter("dropped"), UINT64_MAX);
    EXPECT_EQ(report.counter("filtered"), 0U);
    ASSERT_EQ(report.listeners.size(), 2U);
    EXPECT_EQ(report.listeners[1].protocol, "tls");
    EXPECT_EQ(report.listeners[1].port, 6514);
    ASSERT_EQ(report.refusals.size(), 1U);
    EXPECT_EQ(report.refusals[0].sender, "10.0.0.7");
    EXPECT_EQ(report.refusals[0].reason, "filtered");
    EXPECT_EQ(report.refusals[0].detail, "\"a\"");
    EXPECT_EQ(report.refusals[0].seconds, 1700000001);
    EXPECT_EQ(report.refusals[0].count, 3U);
    EXPECT_NE(report.properties.find("Later"), nullptr);
}

TEST(ServiceStateTest, PassesOverWhatIsOfAnotherType) {
    const ServiceReport report =
        readReport({{"Version", 7},
                    {"Since", "now"},
                    {"Counters", Array{"received"}},
                    {"Listeners", Array{Array{"udp"}, "tcp", Array{1, -5}}},
                    {"Refusals", Dictionary{}}});
    EXPECT_EQ(report.version, "");
    EXPECT_EQ(report.since, 0);
    EXPECT_TRUE(report.counters.empty());
    ASSERT_EQ(report.listeners.size(), 1U);
    EXPECT_EQ(report.listeners[0].port, 0);
    EXPECT_TRUE(report.refusals.empty());
}

TEST(ServiceStateTest, TellsThoseWhoWatch) {
    ServiceState state;
    int changes = 0;
    int told = 0;
    state.setWatchHandler([&] { ++changes; });
    auto first = std::make_unique<ServiceState::Watch>(state, [&] { told += 1; });
    EXPECT_TRUE(state.isWatched());
    auto second = std::make_unique<ServiceState::Watch>(state, [&] {
        told += 10;
        first.reset();
    });
    EXPECT_EQ(changes, 1);
    state.take({StatusOutcome::kTold, properties()});
    EXPECT_EQ(told, 11);
    EXPECT_EQ(state.outcome(), StatusOutcome::kTold);
    EXPECT_EQ(state.report().counter("received"), 7U);
    state.take({StatusOutcome::kNotRunning, {}});
    EXPECT_EQ(told, 21);
    EXPECT_EQ(state.outcome(), StatusOutcome::kNotRunning);
    EXPECT_EQ(state.report().counter("received"), 0U);
    second.reset();
    EXPECT_EQ(changes, 2);
    EXPECT_FALSE(state.isWatched());
    state.forget();
    EXPECT_FALSE(state.outcome());
}

// One who ends another's watch before its turn.
TEST(ServiceStateTest, TellsNobodyWhoWatchesNoMore) {
    ServiceState state;
    int told = 0;
    std::unique_ptr<ServiceState::Watch> second;
    const ServiceState::Watch first(state, [&] { second.reset(); });
    second = std::make_unique<ServiceState::Watch>(state, [&] { ++told; });
    state.take({StatusOutcome::kNoBus, {}});
    EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace quorbel
