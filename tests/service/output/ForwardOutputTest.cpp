#include "common/LogReader.h"
#include "platform/Files.h"
#include "service/output/ForwardOutput.h"
#include "service/output/Outputs.h"
#include "service/output/SyslogReceiver.h"
#include "support/TemporaryFolder.h"
#include "support/TestAuthority.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::SyslogReceiver;
using testing::TemporaryFolder;
using testing::TestAuthority;
using testing::waitUntil;
using Protocol = ForwardSettings::Protocol;

struct ForwardOutputTest : ::testing::Test {
    TemporaryFolder folder;
    TestAuthority authority;
    LogStore store{folder.path() / "library"};
    std::unique_ptr<ForwardOutput> output;
    int stored = 0;

    ForwardOutputTest() { store.prepare(); }
    ~ForwardOutputTest() override { stop(); }

    void storeText(const std::string &text) {
        store.append("1700000000,Local7.Debug,fw1," + text + "\r\n", 1700000000, false);
    }
    void storeNumbered(int count, std::size_t size = 0) {
        std::string lines;
        for (int i = 0; i < count; ++i) {
            lines += "1700000000,Local7.Debug,fw1,n" + std::to_string(stored++) +
                     std::string(size, 'x') + "\r\n";
        }
        store.append(lines, 1700000000, false);
    }
    ForwardSettings settings(const SyslogReceiver &receiver, Protocol protocol = Protocol::kTcp) {
        ForwardSettings settings;
        settings.name = "siem";
        settings.server = "127.0.0.1";
        settings.serverName = "localhost";
        settings.port = receiver.port();
        settings.protocol = protocol;
        settings.history = true;
        settings.authorityFile = folder.write("authority.pem", authority.certificate());
        return settings;
    }
    void start(const ForwardSettings &settings) {
        stop();
        output = std::make_unique<ForwardOutput>(store, folder.path() / "library/outputs", settings,
                                                 std::chrono::milliseconds(50));
        output->start();
    }
    void stop() {
        if (output) {
            output->stop();
        }
        output.reset();
    }
    [[nodiscard]] bool isDone(std::uint64_t sent) const {
        const OutputState state = output->state();
        return state.sent >= sent && state.lagEvents == 0;
    }
    bool hasProblem(const std::string &text) const {
        return waitUntil([&] { return output->state().problem.find(text) != std::string::npos; });
    }
};

struct ForwardProtocolTest : ForwardOutputTest, ::testing::WithParamInterface<Protocol> {
    SyslogReceiver::Setup setup() {
        SyslogReceiver::Setup setup;
        setup.datagrams = GetParam() == Protocol::kUdp;
        if (GetParam() == Protocol::kTls) {
            setup.identity = authority.issue();
        }
        return setup;
    }
};

TEST_P(ForwardProtocolTest, sendsWhatIsStored) {
    const SyslogReceiver receiver(setup());
    start(settings(receiver, GetParam()));
    storeText("sshd[7]: one");
    storeText("two");
    EXPECT_TRUE(waitUntil([&] { return receiver.count() == 2; }));
    EXPECT_THAT(receiver.messages(), ElementsAre("<191>1 2023-11-14T22:13:20Z fw1 sshd 7 - - one",
                                                 "<191>1 2023-11-14T22:13:20Z fw1 - - - - two"));
    EXPECT_TRUE(waitUntil([this] { return isDone(2); }));
    EXPECT_EQ(output->state().problem, "");
    storeText("three");
    EXPECT_TRUE(waitUntil([&] { return receiver.count() == 3; }));
}

TEST_P(ForwardProtocolTest, goesOnWhereItWas) {
    const SyslogReceiver receiver(setup());
    // No more than a socket holds.
    constexpr int kCount = 100;
    start(settings(receiver, GetParam()));
    storeNumbered(kCount);
    EXPECT_TRUE(waitUntil([&] { return receiver.count() == kCount; }));
    stop();
    storeNumbered(kCount);
    start(settings(receiver, GetParam()));
    EXPECT_TRUE(waitUntil([this] { return isDone(kCount); }));
    // An end in order needs nothing to be sent again.
    EXPECT_TRUE(waitUntil([&] { return receiver.count() >= 2 * kCount; }));
    EXPECT_EQ(receiver.count(), 2 * kCount);
    EXPECT_THAT(receiver.messages().back(), EndsWith(" n199"));
}

std::string nameOf(const ::testing::TestParamInfo<Protocol> &tested) {
    return tested.param == Protocol::kUdp ? "udp" : tested.param == Protocol::kTcp ? "tcp" : "tls";
}
INSTANTIATE_TEST_SUITE_P(Each, ForwardProtocolTest,
                         ::testing::Values(Protocol::kUdp, Protocol::kTcp, Protocol::kTls), nameOf);

TEST_F(ForwardOutputTest, sendsWhatItsFilterMeans) {
    const SyslogReceiver receiver;
    ForwardSettings filtered = settings(receiver);
    filtered.filter.setMessage("*keep*");
    start(filtered);
    storeText("leave this");
    storeText("keep this");
    storeText("leave that");
    storeText("keep that");
    EXPECT_TRUE(waitUntil([&] { return receiver.count() == 2; }));
    EXPECT_THAT(receiver.messages(), Each(HasSubstr("keep")));
    EXPECT_TRUE(waitUntil([this] { return isDone(2); }));
}

TEST_F(ForwardOutputTest, beginsWithWhatComesUnlessHistoryIsWanted) {
    const SyslogReceiver receiver;
    storeText("old");
    ForwardSettings later = settings(receiver);
    later.history = false;
    start(later);
    storeText("new");
    EXPECT_TRUE(waitUntil([this] { return isDone(1); }));
    EXPECT_THAT(receiver.messages(), ElementsAre(EndsWith(" new")));
    ForwardSettings all = settings(receiver);
    all.name = "other";
    start(all);
    EXPECT_TRUE(waitUntil([this] { return isDone(2); }));
    EXPECT_THAT(receiver.messages(),
                ElementsAre(EndsWith(" new"), EndsWith(" old"), EndsWith(" new")));
}

/// Connections that end anywhere, and a server that is away for a while.
TEST_F(ForwardOutputTest, losesNothingWhenConnectionsBreak) {
    constexpr int kTotal = 20000;
    auto receiver = std::make_unique<SyslogReceiver>();
    SyslogReceiver::Setup again;
    again.port = receiver->port();
    std::set<std::string> received;
    const auto collect = [&] {
        for (const std::string &message : receiver->messages()) {
            received.insert(message.substr(message.rfind(' ') + 1));
        }
        EXPECT_FALSE(receiver->isBroken());
    };
    start(settings(*receiver));
    for (int round = 0; round < 4; ++round) {
        receiver->resetAfter(static_cast<std::size_t>(round) * 700 + 3);
        storeNumbered(kTotal / 4, 100);
        EXPECT_TRUE(waitUntil([&] { return receiver->count() > 0; }));
        collect();
        receiver.reset();
        EXPECT_TRUE(hasProblem("127.0.0.1 port"));
        receiver = std::make_unique<SyslogReceiver>(again);
    }
    EXPECT_TRUE(waitUntil([this] { return output->state().lagEvents == 0 && isDone(kTotal); },
                          std::chrono::seconds(60)));
    collect();
    EXPECT_EQ(received.size(), kTotal);
}

TEST_F(ForwardOutputTest, isHeldUpByAServerThatTakesNothingButStoringIsNot) {
    SyslogReceiver receiver;
    receiver.hold(true);
    start(settings(receiver));
    for (int i = 0; i < 300; ++i) {
        storeNumbered(100, 900);
    }
    EXPECT_TRUE(waitUntil([this] { return output->state().lagEvents > 10000; }));
    // Neither is an end. What the server's system took in may count by then.
    EXPECT_LT(output->state().sent, 20000);
    stop();
    receiver.hold(false);
    start(settings(receiver));
    EXPECT_TRUE(waitUntil([&] { return receiver.count() >= 30000 && isDone(0); },
                          std::chrono::seconds(60)));
    EXPECT_FALSE(receiver.isBroken());
}

TEST_F(ForwardOutputTest, saysWhyAConnectionBroke) {
    for (const Protocol protocol : {Protocol::kTcp, Protocol::kTls}) {
        SyslogReceiver::Setup setup;
        if (protocol == Protocol::kTls) {
            setup.identity = authority.issue();
        }
        auto receiver = std::make_unique<SyslogReceiver>(setup);
        start(settings(*receiver, protocol));
        storeText("one");
        EXPECT_TRUE(waitUntil([&] { return receiver->count() > 0; }));
        receiver->resetAfter(0);
        storeText("two");
        EXPECT_TRUE(hasProblem("Connection reset by peer")) << output->state().problem;
    }
}

TEST_F(ForwardOutputTest, saysWhyItCannotConnect) {
    auto receiver = std::make_unique<SyslogReceiver>();
    const ForwardSettings gone = settings(*receiver);
    receiver.reset();
    start(gone);
    EXPECT_TRUE(hasProblem("it cannot be reached: Connection refused"));
    EXPECT_GT(output->state().problemSeconds, 1'700'000'000);
}

struct Refusal {
    std::string name;
    std::function<void(const TestAuthority &, const TestAuthority &, SyslogReceiver::Setup &,
                       ForwardSettings &)>
        change;
    std::string problem;
};
struct ForwardRefusalTest : ForwardOutputTest, ::testing::WithParamInterface<Refusal> {};

TEST_P(ForwardRefusalTest, sendsNothingToAServerThatIsNotTheOne) {
    const TestAuthority other("Another authority");
    SyslogReceiver::Setup setup;
    setup.identity = authority.issue();
    ForwardSettings wanted;
    GetParam().change(authority, other, setup, wanted);
    const SyslogReceiver receiver(setup);
    ForwardSettings tls = settings(receiver, Protocol::kTls);
    tls.serverName = wanted.serverName.empty() ? tls.serverName : wanted.serverName;
    start(tls);
    storeText("secret");
    EXPECT_TRUE(hasProblem(GetParam().problem)) << output->state().problem;
    EXPECT_EQ(receiver.count(), 0);
    EXPECT_EQ(output->state().sent, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Each, ForwardRefusalTest,
    ::testing::Values(Refusal{"unknownAuthority",
                              [](const auto &, const auto &other, auto &setup, auto &) {
                                  setup.identity = other.issue();
                              },
                              "its certificate is refused: unable to get local issuer certificate"},
                      Refusal{"expired",
                              [](const auto &authority, const auto &, auto &setup, auto &) {
                                  setup.identity = authority.issueExpired();
                              },
                              "its certificate is refused: certificate has expired"},
                      Refusal{"otherName",
                              [](const auto &, const auto &, auto &, auto &wanted) {
                                  wanted.serverName = "siem.example";
                              },
                              "its certificate is refused: hostname mismatch"},
                      Refusal{"otherAddress",
                              [](const auto &, const auto &, auto &, auto &wanted) {
                                  wanted.serverName = "192.0.2.1";
                              },
                              "its certificate is refused: IP address mismatch"},
                      Refusal{"noCertificateOfOurs",
                              [](const auto &authority, const auto &, auto &setup, auto &) {
                                  setup.clientAuthority = authority.certificate();
                              },
                              "TLS failed: tlsv13 alert certificate required"}),
    [](const auto &tested) { return tested.param.name; });

TEST_F(ForwardOutputTest, showsItsCertificate) {
    SyslogReceiver::Setup setup;
    setup.identity = authority.issue();
    setup.clientAuthority = authority.certificate();
    const SyslogReceiver receiver(setup);
    const auto own = authority.issue("DNS:collector");
    ForwardSettings tls = settings(receiver, Protocol::kTls);
    tls.certificateFile = folder.write("own.pem", own.certificate);
    tls.keyFile = folder.write("own-key.pem", own.key);
    start(tls);
    storeText("for your eyes");
    EXPECT_TRUE(waitUntil([&] { return receiver.count() == 1; }));
}

TEST_F(ForwardOutputTest, followsTheConfiguration) {
    const SyslogReceiver first;
    const SyslogReceiver second;
    Outputs outputs(store, folder.path() / "library/outputs");
    ServiceConfiguration configuration;
    configuration.forwards = {settings(first)};
    outputs.configure(configuration);
    storeText("one");
    EXPECT_TRUE(waitUntil([&] { return first.count() == 1; }));
    // It goes on where it was, with another server.
    configuration.forwards = {settings(second)};
    outputs.configure(configuration);
    // Until the one before has ended, it may send what comes.
    EXPECT_TRUE(waitUntil([&] { return outputs.states().size() == 1; }));
    storeText("two");
    EXPECT_TRUE(waitUntil([&] { return second.count() == 1; }));
    EXPECT_THAT(second.messages(), ElementsAre(EndsWith(" two")));
    ForwardSettings added = settings(first);
    added.name = "added";
    configuration.forwards.push_back(added);
    outputs.configure(configuration);
    EXPECT_TRUE(waitUntil([&] { return first.count() == 3; }));
    EXPECT_THAT(outputs.states(), ElementsAre(::testing::Field(&OutputState::name, "siem"),
                                              ::testing::Field(&OutputState::name, "added")));
    outputs.configure({});
    EXPECT_TRUE(outputs.states().empty());
    outputs.stop();
    storeText("three");
    EXPECT_EQ(second.count(), 1);
}

}  // namespace
}  // namespace quorbel
