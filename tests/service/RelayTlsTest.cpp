// Relays that speak TLS. Senders are addresses of this machine: 127.0.0.N.

#include "service/ServiceFixture.h"
#include "service/TlsClient.h"
#include "support/TestAuthority.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>

namespace quorbel {
namespace {

using testing::ServiceProcess;
using testing::TestAuthority;
using ::testing::UnorderedElementsAre;

struct RelayTlsTest : testing::ServiceFixture {
    RelayTlsTest() { std::signal(SIGPIPE, SIG_IGN); }

    void startWith(const std::string &configuration) {
        const TestAuthority::Issued issued = authority.issue();
        folder.write("tls/cert.pem", issued.certificate);
        folder.write("tls/key.pem", issued.key);
        folder.write("quorbelsrv.conf", configuration);
        ServiceProcess::Setup setup;
        setup.arguments = {"--port", "0", "--tls-port", "0"};
        service = start(setup);
        ASSERT_TRUE(testing::waitUntil([this] { return service->tlsPort() != 0; }));
    }
    /// Gives it another configuration, and waits until that is in force.
    void reload(const std::string &configuration, const std::string &journal) {
        folder.write("quorbelsrv.conf", configuration);
        const std::size_t before = service->journal().size();
        kill(service->pid(), SIGHUP);
        EXPECT_TRUE(testing::waitUntil(
            [&] { return service->journal().find(journal, before) != std::string::npos; }));
    }
    [[nodiscard]] std::unique_ptr<Client> connectAs(unsigned host,
                                                    const Client::Setup &setup = {}) const {
        return std::make_unique<Client>(testing::connectFrom(host, service->tlsPort()), authority,
                                        setup);
    }

    inline static const std::string kRelay = "[Relays]\nNetworks=127.0.0.2/31\n";

    const TestAuthority authority;
    std::unique_ptr<ServiceProcess> service;
};

TEST_F(RelayTlsTest, OnlyARelayNamesHosts) {
    startWith(kRelay);
    const auto relay = connectAs(2);
    const auto stranger = connectAs(4);
    // In turns, as lines and with a count, so that each follows upon the other.
    for (std::size_t round = 1; round <= 3; ++round) {
        ASSERT_TRUE(relay->send("<11>1 - web1 - - - - by line\n<11>1 - web2 - - - - by line\n"));
        ASSERT_TRUE(stranger->send("<11>1 - web1 - - - - forged\n25 <11>1 - web1 - - - - shor"));
        ASSERT_TRUE(waitForStored(round * 4));
    }
    std::size_t forged = 0;
    for (const std::string &event : stored()) {
        forged += event == "User.Error,127.0.0.4,forged" || event == "User.Error,127.0.0.4,shor"
                      ? 1U
                      : 0U;
    }
    EXPECT_EQ(forged, 6U);
    service->terminate();
    EXPECT_THAT(service->journal(), ::testing::HasSubstr(", relayed 6, "));
}

TEST_F(RelayTlsTest, WhoIsARelayChangesForConnectionsThatThereAre) {
    startWith("");
    const auto sender = connectAs(2);
    ASSERT_TRUE(sender->send("<11>1 - web1 - - - - before\n"));
    ASSERT_TRUE(waitForStored(1));
    reload(kRelay, "relay networks: 1");
    ASSERT_TRUE(sender->send("<11>1 - web1 - - - - trusted\n"));
    ASSERT_TRUE(waitForStored(2));
    reload("", "relay networks: 0");
    ASSERT_TRUE(sender->send("<11>1 - web1 - - - - behind\n"));
    ASSERT_TRUE(waitForStored(3));
    EXPECT_THAT(stored(),
                UnorderedElementsAre("User.Error,127.0.0.2,before", "User.Error,web1,trusted",
                                     "User.Error,127.0.0.2,behind"));
}

/// A certificate says who may send. Who is a relay, only its address says.
TEST_F(RelayTlsTest, ACertificateMakesNoRelay) {
    const TestAuthority clients("Clients");
    folder.write("tls/ca.pem", clients.certificate());
    startWith(kRelay);
    const Client::Setup known{clients.issue("DNS:web1,IP:127.0.0.2"), TLS1_3_VERSION};
    ASSERT_TRUE(connectAs(4, known)->send("<11>1 - web1 - - - - text\n"));
    ASSERT_TRUE(waitForStored(1));
    ASSERT_TRUE(connectAs(2, known)->send("<11>1 - web1 - - - - text\n"));
    ASSERT_TRUE(waitForStored(2));
    const auto nobody = connectAs(2);
    nobody->send("<11>1 - web1 - - - - without a certificate\n");
    EXPECT_TRUE(nobody->isRefused());
    service->terminate();
    EXPECT_THAT(stored(),
                UnorderedElementsAre("User.Error,127.0.0.4,text", "User.Error,web1,text"));
}

}  // namespace
}  // namespace quorbel
