#include "service/ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::connectFrom;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::sendTo;
using testing::ServiceProcess;

/// Two real services: what the first one stores, it sends on to the second, which trusts it.
/// Senders are addresses of this machine: 127.0.0.N.
struct ChainTest : testing::ServiceFixture {
    /// The second one of a chain.
    struct Second : testing::ServiceFixture {
        void TestBody() override {}
    };

    void startSecond(std::uint16_t port = 0) {
        second.folder.write("quorbelsrv.conf", "[Relays]\nNetworks=127.0.0.1\n");
        ServiceProcess::Setup setup;
        setup.arguments = {"--port", std::to_string(port)};
        receiver = second.start(setup);
    }
    [[nodiscard]] std::string forwardTo(std::uint16_t port, const std::string &more = "") const {
        return "[Forward \"up\"]\nServer=127.0.0.1\nPort=" + std::to_string(port) + '\n' + more;
    }
    void startFirst(const std::string &configuration) {
        folder.write("quorbelsrv.conf", configuration);
        sender = start();
    }
    void send(unsigned host, const std::string &message) const {
        sendTo(connectFrom(host, sender->port()), message + '\n');
    }

    Second second;
    std::unique_ptr<ServiceProcess> receiver;
    std::unique_ptr<ServiceProcess> sender;
};

TEST_F(ChainTest, AnEventKeepsItsHostPriorityAndText) {
    startSecond();
    startFirst(forwardTo(receiver->port()));
    send(7, "<11>Nov 21 02:54:07 forged tag[7]: one");
    send(8, "<131>two, with a comma");
    ASSERT_TRUE(second.waitForStored(2));
    EXPECT_THAT(second.stored(),
                ::testing::UnorderedElementsAre("User.Error,127.0.0.7,tag[7]: one",
                                                "Local0.Error,127.0.0.8,two, with a comma"));
    ASSERT_TRUE(waitForStored(2));
}

TEST_F(ChainTest, OnlyWhatTheFilterMeansIsSentOn) {
    startSecond();
    startFirst(forwardTo(receiver->port(), "Hosts=127.0.0.0/8, !127.0.0.8\nSeverity=Error\n"));
    send(7, "<14>too harmless");
    send(8, "<11>left out");
    ASSERT_TRUE(waitForStored(2));
    send(7, "<11>meant");
    ASSERT_TRUE(second.waitForStored(1));
    EXPECT_THAT(second.stored(), ElementsAre("User.Error,127.0.0.7,meant"));
}

TEST_F(ChainTest, OutputsComeAndGoWithTheConfiguration) {
    startSecond();
    startFirst("");
    send(7, "<11>before");
    ASSERT_TRUE(waitForStored(1));
    folder.write("quorbelsrv.conf", forwardTo(receiver->port()));
    kill(sender->pid(), SIGHUP);
    ASSERT_TRUE(sender->waitForJournal("relay networks: 0, outputs: 1"));
    send(7, "<11>while it is there");
    ASSERT_TRUE(second.waitForStored(1));
    // A mistake stops nothing.
    folder.write("quorbelsrv.conf", "nonsense");
    kill(sender->pid(), SIGHUP);
    ASSERT_TRUE(sender->waitForJournal("what was in force stays in force"));
    send(7, "<11>still there");
    ASSERT_TRUE(second.waitForStored(2));
    folder.write("quorbelsrv.conf", "");
    kill(sender->pid(), SIGHUP);
    ASSERT_TRUE(sender->waitForJournal("relay networks: 0, outputs: 0"));
    send(7, "<11>behind");
    ASSERT_TRUE(waitForStored(4));
    EXPECT_EQ(sender->terminate(), 0);
    EXPECT_THAT(second.stored(), ElementsAre("User.Error,127.0.0.7,while it is there",
                                             "User.Error,127.0.0.7,still there"));
}

TEST_F(ChainTest, WhatWasStoredBeforeIsSentOnWhereThatIsWanted) {
    startSecond();
    startFirst("");
    send(7, "<11>before");
    ASSERT_TRUE(waitForStored(1));
    EXPECT_EQ(sender->terminate(), 0);
    startFirst(forwardTo(receiver->port(), "History=yes\n"));
    EXPECT_TRUE(second.waitForStored(1));
    EXPECT_THAT(second.stored(), ElementsAre("User.Error,127.0.0.7,before"));
}

TEST_F(ChainTest, WhatCouldNotBeSentIsSentWhenTheReceiverIsBack) {
    startSecond();
    const std::uint16_t port = receiver->port();
    receiver->terminate();
    startFirst(forwardTo(port));
    for (int i = 0; i < 100; ++i) {
        send(7, "<11>message " + std::to_string(i));
    }
    ASSERT_TRUE(waitForStored(100));
    // Nor does a receiver that is away keep the service from ending, or its successor from going
    // on.
    EXPECT_EQ(sender->terminate(), 0);
    EXPECT_THAT(second.stored(), IsEmpty());
    startSecond(port);
    startFirst(forwardTo(port));
    EXPECT_TRUE(second.waitForStored(100));
    EXPECT_EQ(second.stored(), stored());
}

TEST_F(ChainTest, TheCountersTellWhatWasSentOn) {
    startSecond();
    startFirst(forwardTo(receiver->port()));
    send(7, "<11>one");
    send(7, "<11>two");
    ASSERT_TRUE(second.waitForStored(2));
    EXPECT_EQ(sender->terminate(), 0);
    EXPECT_THAT(sender->journal(), HasSubstr(", events sent on 2, events removed unsent 0, "));
    receiver->terminate();
    EXPECT_THAT(receiver->journal(), HasSubstr(", relayed 2, "));
}

TEST_F(ChainTest, TheCountersForgetNoOutputThatGoes) {
    startSecond();
    startFirst(forwardTo(receiver->port()));
    send(7, "<11>one");
    ASSERT_TRUE(second.waitForStored(1));
    folder.write("quorbelsrv.conf", "");
    kill(sender->pid(), SIGHUP);
    ASSERT_TRUE(sender->waitForJournal("relay networks: 0, outputs: 0"));
    // The same name with the same cursor, as another output.
    folder.write("quorbelsrv.conf", forwardTo(receiver->port(), "Severity=Error\n"));
    kill(sender->pid(), SIGHUP);
    ASSERT_TRUE(sender->waitForJournal("relay networks: 0, outputs: 1"));
    send(7, "<11>two");
    ASSERT_TRUE(second.waitForStored(2));
    EXPECT_EQ(sender->terminate(), 0);
    EXPECT_THAT(sender->journal(), HasSubstr(", events sent on 2, "));
}

}  // namespace
}  // namespace quorbel
