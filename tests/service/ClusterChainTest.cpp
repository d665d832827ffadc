// The real service and the real column store.

#include "cluster/ClusterFixture.h"
#include "control/ControlProcess.h"
#include "service/ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>

namespace quorbel {
namespace {

using testing::ClickHouse;
using ::testing::HasSubstr;
using testing::ServiceProcess;

struct ClusterChainTest : testing::ServiceFixture {
    void SetUp() override {
        if (!ClickHouse::isThere()) {
            GTEST_SKIP() << ClickHouse::kMissing;
        }
        ASSERT_TRUE(server.start());
        ASSERT_EQ(applySchema(server, folder, clusterSchema({}, {})), "");
        folder.write("quorbelsrv.conf",
                     "[Collector]\nName=ham-1\n[Cluster \"main\"]\nServers=" + server.address() +
                         "\nUser=quorbel\nPasswordFile=" + server.connection().passwordFile + "\n");
        service = start();
    }
    void send(const std::string &message) {
        testing::sendTo(testing::connectFrom(7, service->port()), message + '\n');
    }
    [[nodiscard]] bool waitForRows(std::size_t count) const {
        return testing::waitUntil([&] {
            return server.ask("SELECT count() FROM quorbel.events_once") == std::to_string(count);
        });
    }
    /// What quorbelctl finds, in files or in the cluster.
    [[nodiscard]] std::string find(std::vector<std::string> more) const {
        more.insert(more.begin(),
                    {"find", "--config", (folder.path() / "quorbelsrv.conf").string()});
        return testing::runControl({.library = folder.path()}, more).output;
    }

    ClickHouse server{folder.path() / "server"};
    std::unique_ptr<ServiceProcess> service;
};

TEST_F(ClusterChainTest, WhatIsStoredIsInTheCluster) {
    send("<11>one, with a comma");
    send("<131>two");
    ASSERT_TRUE(waitForRows(2));
    EXPECT_EQ(server.ask("SELECT priority, host, message, collector FROM quorbel.events_once"
                         " ORDER BY message"),
              "User.Error\t127.0.0.7\tone, with a comma\tham-1\n"
              "Local0.Error\t127.0.0.7\ttwo\tham-1");
    EXPECT_EQ(find({"--cluster"}), find({}));
}

TEST_F(ClusterChainTest, AKilledServiceGoesOnWhereItWas) {
    for (std::size_t life = 1; life <= 5; ++life) {
        send("<11>life " + std::to_string(life));
        ASSERT_TRUE(waitForStored(life));
        service->kill();
        service = start();
    }
    ASSERT_TRUE(waitForRows(5));
    EXPECT_EQ(find({"--cluster"}), find({}));
}

TEST_F(ClusterChainTest, StoringGoesOnWithoutTheCluster) {
    server.kill();
    send("<11>one");
    ASSERT_TRUE(waitForStored(1));
    EXPECT_TRUE(service->waitForJournal("Output main: " + server.address() + ": "));
    send("<11>two");
    ASSERT_TRUE(waitForStored(2));
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(waitForRows(2));
    EXPECT_TRUE(service->waitForJournal("Output main works again"));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_EQ(find({"--cluster"}), find({}));
}

}  // namespace
}  // namespace quorbel
