// The output as the service has it: by the configuration, on its thread.

#include "cluster/ClusterFixture.h"
#include "cluster/HttpStandIn.h"
#include "service/output/Outputs.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <chrono>

namespace quorbel {
namespace {

using testing::ClusterFixture;
using ::testing::HasSubstr;
using testing::HttpStandIn;
using testing::TemporaryFolder;
using testing::waitUntil;

struct ClusterOutputTest : ClusterFixture {
    void SetUp() override {
        ClusterFixture::SetUp();
        store.prepare();
    }
    [[nodiscard]] static ServiceConfiguration configuration(const std::string &address) {
        ClusterSettings settings;
        settings.name = "main";
        settings.servers = {address};
        settings.user = "quorbel";
        settings.passwordFile = server().connection().passwordFile;
        settings.history = true;
        ServiceConfiguration configuration;
        configuration.collector = "ham-1";
        configuration.clusters = {settings};
        return configuration;
    }
    void append(const std::string &message) {
        store.append("1700000000,User.Debug,h," + message + "\r\n", 1700000000, false);
    }
    [[nodiscard]] OutputState state() const { return outputs.states().at(0); }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    Outputs outputs{store, folder.path() / "outputs"};
};

TEST_F(ClusterOutputTest, WhatIsStoredComes) {
    append("before");
    outputs.configure(configuration(server().address()));
    EXPECT_TRUE(waitUntil([this] { return state().sent == 1; }));
    append("after");
    EXPECT_TRUE(waitUntil([this] { return state().sent == 2; }));
    EXPECT_EQ(ask("SELECT collector, message FROM quorbel.events_once ORDER BY number"),
              "ham-1\tbefore\nham-1\tafter");
    EXPECT_EQ(state().kind, "cluster");
    EXPECT_EQ(state().name, "main");
    EXPECT_EQ(state().problem, "");
}

TEST_F(ClusterOutputTest, AProblemIsToldAndTheEventsGoOnceItIsOver) {
    HttpStandIn broken([](const auto & /*request*/) {
        return HttpStandIn::answer("500 Error", "Code: 999, broken\n");
    });
    append("one");
    outputs.configure(configuration(broken.address()));
    EXPECT_TRUE(waitUntil([this] { return !state().problem.empty(); }));
    EXPECT_EQ(state().problem, broken.address() + ": Code: 999, broken");
    EXPECT_EQ(state().sent, 0U);
    EXPECT_TRUE(waitUntil([this] { return state().lagEvents == 1; }));
    // Another address: the same batch goes there.
    outputs.configure(configuration(server().address()));
    EXPECT_TRUE(waitUntil([] { return ask("SELECT count() FROM quorbel.events_once") == "1"; }));
}

TEST_F(ClusterOutputTest, ASilentServerDoesNotHoldUpTheEnd) {
    HttpStandIn silent([](const auto & /*request*/) { return std::nullopt; });
    append("one");
    outputs.configure(configuration(silent.address()));
    EXPECT_TRUE(waitUntil([&silent] { return !silent.requests().empty(); }));
    const auto begin = std::chrono::steady_clock::now();
    outputs.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, testing::kPatience);
    // What was on its way is kept for the next time.
    outputs.configure(configuration(server().address()));
    EXPECT_TRUE(waitUntil([] { return ask("SELECT count() FROM quorbel.events_once") == "1"; }));
}

/// The cluster keeps each batch as files of its own until it has merged them.
TEST_F(ClusterOutputTest, FewEventsAreFewBatches) {
    HttpStandIn counting(
        [](const auto & /*request*/) { return HttpStandIn::answer("200 OK", ""); });
    outputs.configure(configuration(counting.address()));
    const auto begin = std::chrono::steady_clock::now();
    std::uint64_t count = 0;
    while (std::chrono::steady_clock::now() - begin < std::chrono::seconds(3)) {
        append(std::to_string(++count));
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(waitUntil([&] { return state().sent == count; }));
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin)
            .count();
    EXPECT_LE(counting.requests().size(), static_cast<std::size_t>(seconds) + 2);
}

}  // namespace
}  // namespace quorbel
