#include "service/ManagerStandIn.h"
#include "service/ServiceFixture.h"
#include "support/TestAuthority.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorbel {
namespace {

using testing::connectTo;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::ManagerStandIn;
using testing::sendTo;
using testing::ServiceProcess;
using ::testing::UnorderedElementsAre;
using testing::waitUntil;

/// A service whose ports somebody else holds open.
struct HandOverTest : testing::ServiceFixture {
    [[nodiscard]] std::uint16_t port() const { return manager.listeners().port; }
    void startNext() {
        service = start(manager.setup());
        EXPECT_EQ(service->port(), port());
    }
    void restart() {
        EXPECT_EQ(service->terminate(), 0) << service->journal();
        startNext();
    }

    testing::TemporaryFolder managersFolder;
    ManagerStandIn manager{managersFolder.path()};
    std::unique_ptr<ServiceProcess> service;
};

TEST_F(HandOverTest, ReceivesOnTheSocketsItIsPassed) {
    startNext();
    sendTo(connectTo(port(), SOCK_DGRAM), "<13>by datagram");
    ASSERT_TRUE(waitForStored(1));
    sendTo(connectTo(port(), SOCK_STREAM), "<13>by stream\n");
    ASSERT_TRUE(waitForStored(2));
    EXPECT_THAT(stored(), ElementsAre(HasSubstr("by datagram"), HasSubstr("by stream")));
}

TEST_F(HandOverTest, LosesNothingWhileNobodyRuns) {
    startNext();
    const UniqueFd stream = connectTo(port(), SOCK_STREAM);
    sendTo(stream, "<13>one\n<13>tw");
    ASSERT_TRUE(waitForStored(1));
    ASSERT_EQ(service->terminate(), 0) << service->journal();
    EXPECT_THAT(manager.kept(), ElementsAre("stream", "states"));
    // Half a message is in the states, the rest of it on the way.
    sendTo(stream, "o\n<13>three\n");
    sendTo(connectTo(port(), SOCK_DGRAM), "<13>four");
    sendTo(connectTo(port(), SOCK_STREAM), "<13>five\n");
    startNext();
    ASSERT_TRUE(waitForStored(5));
    sendTo(stream, "<13>six\n");
    ASSERT_TRUE(waitForStored(6));
    EXPECT_THAT(stored(),
                UnorderedElementsAre(HasSubstr("one"), HasSubstr("two"), HasSubstr("three"),
                                     HasSubstr("four"), HasSubstr("five"), HasSubstr("six")));
}

TEST_F(HandOverTest, KeepsConnectionsOverManyStarts) {
    startNext();
    const UniqueFd stream = connectTo(port(), SOCK_STREAM);
    for (std::size_t i = 1; i <= 4; ++i) {
        sendTo(stream, "<13>message " + std::to_string(i) + "\n");
        ASSERT_TRUE(waitForStored(i));
        restart();
    }
    // What it took over is its own alone, so that its end is the end of the connection.
    EXPECT_TRUE(waitUntil([this] { return manager.kept().empty(); }));
    service->kill();
    EXPECT_TRUE(testing::isClosed(stream));
}

TEST_F(HandOverTest, ForgetsConnectionsThatEnd) {
    startNext();
    sendTo(connectTo(port(), SOCK_STREAM), "<13>short\n");
    ASSERT_TRUE(waitForStored(1));
    ASSERT_EQ(service->terminate(), 0);
    EXPECT_THAT(manager.kept(), ElementsAre("states"));
}

TEST_F(HandOverTest, CountsWhatTheKernelDroppedMeanwhileOnce) {
    const int small = 4096;
    setsockopt(manager.listeners().udp.get(), SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    startNext();
    ASSERT_EQ(service->terminate(), 0);
    const UniqueFd sender = connectTo(port(), SOCK_DGRAM);
    for (int i = 0; i < 500; ++i) {
        sendTo(sender, "<13>" + std::string(500, 'x'));
    }
    startNext();
    ASSERT_TRUE(waitForStored(1));
    const std::size_t taken = stored().size();
    ASSERT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("dropped " + std::to_string(500 - taken)));
    restart();
    ASSERT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr(" dropped 0,"));
}

TEST_F(HandOverTest, KeepsThePortForTls) {
    const testing::TestAuthority authority;
    const auto issued = authority.issue();
    folder.write("tls/cert.pem", issued.certificate);
    folder.write("tls/key.pem", issued.key);
    auto setup = manager.setup();
    setup.arguments = {"--tls-port", "0"};
    service = start(setup);
    const std::string line = "Listening for TLS on port ";
    ASSERT_TRUE(service->waitForJournal(line));
    const std::uint16_t tlsPort = service->tlsPort();
    ASSERT_EQ(service->terminate(), 0);
    EXPECT_THAT(manager.kept(), UnorderedElementsAre("tls", "states"));
    // Nobody runs, but whoever comes is not sent away.
    const UniqueFd early = connectTo(tlsPort, SOCK_STREAM);
    setup = manager.setup();
    setup.arguments = {"--tls-port", std::to_string(tlsPort)};
    service = start(setup);
    EXPECT_TRUE(service->waitForJournal(line + std::to_string(tlsPort))) << service->journal();
    EXPECT_THAT(service->journal(), ::testing::Not(HasSubstr("cannot be opened")));
}

}  // namespace
}  // namespace quorbel
