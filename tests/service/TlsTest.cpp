#include "common/LogReader.h"
#include "platform/Files.h"
#include "platform/UniqueFd.h"
#include "service/ServiceFixture.h"
#include "service/TlsClient.h"
#include "service/input/TlsContext.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"
#include "support/TestAuthority.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::ServiceProcess;
using testing::TemporaryFolder;
using testing::TestAuthority;
using testing::waitUntil;

constexpr std::uint64_t kFewDescriptors = 128;

struct TlsTest : ::testing::Test {
    TlsTest() { std::signal(SIGPIPE, SIG_IGN); }

    void install(const TestAuthority::Issued &issued) const {
        folder.write("tls/cert.pem", issued.certificate);
        folder.write("tls/key.pem", issued.key);
    }
    void start(const std::string &port = "0", std::uint64_t descriptors = 0) {
        service = std::make_unique<ServiceProcess>(
            ServiceProcess::Setup{.library = folder.path(),
                                  .busAddress = {},
                                  .arguments = {"--port", "0", "--tls-port", port},
                                  .descriptors = descriptors});
        ASSERT_TRUE(service->isListening()) << service->journal();
    }
    [[nodiscard]] std::vector<std::string> messages() const {
        std::vector<std::string> result;
        for (const std::string &name : listFolder(folder.path())) {
            if (hasExtension(name, "log")) {
                LogReader::readFile(folder.path() / name, [&](const LogLine &line) {
                    result.emplace_back(line.message);
                    return true;
                });
            }
        }
        return result;
    }
    bool waitForMessages(std::size_t count) {
        return waitUntil([&] { return messages().size() >= count; });
    }
    /// Returns when it has been done.
    void reload() const {
        constexpr std::string_view kLine = "Reading the settings again";
        const std::size_t begin = service->journal().size();
        ::kill(service->pid(), SIGHUP);
        ASSERT_TRUE(
            waitUntil([&] { return service->journal().find(kLine, begin) != std::string::npos; }));
        // What is sent now is taken by the same thread, later.
        const std::size_t count = messages().size();
        const UniqueFd plain = connectTo(service->port());
        ASSERT_EQ(send(plain.get(), "<13>reloaded\n", 13, MSG_NOSIGNAL), 13);
        ASSERT_TRUE(waitUntil([&] { return messages().size() > count; }));
    }

    const TestAuthority authority;
    TemporaryFolder folder;
    std::unique_ptr<ServiceProcess> service;
};

TEST_F(TlsTest, TakesBothFramingsAndVersions) {
    install(authority.issue());
    start();
    std::size_t count = 0;
    for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        Client client(service->tlsPort(), authority, {{}, version});
        ASSERT_TRUE(client.isConnected());
        ASSERT_TRUE(client.send("9 <13>count"));
        ASSERT_TRUE(client.send("ed"));
        // The frame says 9 bytes; what follows is a line.
        ASSERT_TRUE(client.send("\n<13>line\n10 <13>counte<13>unfin"));
        ASSERT_TRUE(waitForMessages(count + 4));
        client.close();
        ASSERT_TRUE(waitForMessages(count + 5));
        count += 5;
    }
    const auto stored = messages();
    EXPECT_THAT(std::vector(stored.begin(), stored.begin() + 5),
                ElementsAre("count", "ed", "line", "counte", "unfin"));
    EXPECT_TRUE(std::equal(stored.begin(), stored.begin() + 5, stored.begin() + 5));
}

TEST_F(TlsTest, OffersNoOldVersions) {
    install(authority.issue());
    start();
    for (const int version : {TLS1_VERSION, TLS1_1_VERSION}) {
        EXPECT_FALSE(Client(service->tlsPort(), authority, {{}, version}).isConnected());
    }
    EXPECT_TRUE(service->waitForJournal("A TLS connection from 127.0.0.1 failed: "));
}

TEST_F(TlsTest, TakesMuchAtOnceAndLosesNothingAtTheEnd) {
    install(authority.issue());
    start();
    Client client(service->tlsPort(), authority);
    std::string frames;
    for (int i = 0; i < 20'000; ++i) {
        frames += "<13>message number " + std::to_string(i) + '\n';
    }
    ASSERT_TRUE(client.send(frames));
    ASSERT_TRUE(client.send("<13>" + std::string(70'000, 'x') + "\n<13>last\n"));
    ASSERT_TRUE(waitUntil([&] { return !messages().empty() && messages().back() == "last"; }));
    EXPECT_EQ(messages()[19'999], "message number 19999");
    // What the kernel holds at the end is stored as well.
    std::size_t count = messages().size();
    for (int i = 0; i < 100; ++i, ++count) {
        ASSERT_TRUE(client.send("<13>frame\n"));
    }
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_EQ(messages().size(), count) << service->journal();
}

// Nobody says that there is more when a part of a record is left within OpenSSL.
TEST_F(TlsTest, ReadsWholeRecords) {
    install(authority.issue());
    auto loaded = TlsContext::load(folder.path() / "tls");
    ASSERT_TRUE(std::holds_alternative<TlsContext>(loaded));
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const auto channel =
        std::get<TlsContext>(loaded).makeChannel(UniqueFd(ends[0]), [](const std::string &) {});
    std::string buffer(std::size_t{64} * 1024, '\0');
    auto connecting = std::async(
        std::launch::async, [&] { return std::make_unique<Client>(UniqueFd(ends[1]), authority); });
    ASSERT_TRUE(waitUntil([&] {
        channel->read(buffer.data(), buffer.size());
        return channel->isEstablished();
    }));
    const auto client = connecting.get();
    // More than is read at once, and no end of a record where the buffer ends.
    constexpr std::size_t kRecords = 7;
    const std::string record(10'000, 'x');
    for (std::size_t i = 0; i < kRecords; ++i) {
        ASSERT_TRUE(client->send(record));
    }
    std::size_t count = 0;
    pollfd input{channel->fd(), POLLIN, 0};
    while (poll(&input, 1, 0) == 1) {
        const auto [length, next] = channel->read(buffer.data(), buffer.size());
        ASSERT_EQ(next, StreamChannel::Next::kReadable);
        count += length;
    }
    EXPECT_EQ(count, kRecords * record.size());
}

TEST_F(TlsTest, ClientsShowACertificateWhereOneIsAskedFor) {
    install(authority.issue());
    const TestAuthority clients("Clients");
    folder.write("tls/ca.pem", clients.certificate());
    start();
    for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        Client nobody(service->tlsPort(), authority, {{}, version});
        nobody.send("<13>forged\n");
        EXPECT_TRUE(nobody.isRefused());
        Client stranger(service->tlsPort(), authority, {authority.issue(), version});
        stranger.send("<13>forged\n");
        EXPECT_TRUE(stranger.isRefused());
        Client known(service->tlsPort(), authority, {clients.issue("DNS:device.example"), version});
        ASSERT_TRUE(known.isConnected());
        EXPECT_TRUE(known.send("<13>genuine\n"));
        ASSERT_TRUE(waitForMessages(version == TLS1_2_VERSION ? 1 : 2));
    }
    EXPECT_THAT(messages(), ElementsAre("genuine", "genuine"));
    service->terminate();
    EXPECT_THAT(service->journal(), HasSubstr("TLS refused 4"));
}

TEST_F(TlsTest, NobodyKeepsOthersWaiting) {
    install(authority.issue());
    start();
    const std::uint16_t port = service->tlsPort();
    std::vector<UniqueFd> silent;
    for (int i = 0; i < 100; ++i) {
        silent.push_back(connectTo(port));
        // Some have begun: the head of a message of 512 bytes that never comes.
        if (i % 2 == 0) {
            EXPECT_EQ(send(silent.back().get(), "\x16\x03\x01\x02\x00\x01", 6, MSG_NOSIGNAL), 6);
        }
    }
    const UniqueFd garbage = connectTo(port);
    const std::string_view plain = "<13>in the clear\n";
    EXPECT_EQ(send(garbage.get(), plain.data(), plain.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(plain.size()));
    Client client(port, authority);
    ASSERT_TRUE(client.send("<13>hello\n"));
    ASSERT_TRUE(waitForMessages(1));
    // Those that never get ready are closed, and those that are stay.
    char byte = 0;
    for (const UniqueFd &fd : silent) {
        EXPECT_EQ(recv(fd.get(), &byte, 1, 0), 0);
    }
    ASSERT_TRUE(client.send("<13>still here\n"));
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_THAT(messages(), ElementsAre("hello", "still here"));
    service->terminate();
    EXPECT_THAT(service->journal(), HasSubstr("TLS refused 101"));
}

TEST_F(TlsTest, ANewConnectionTakesTheIdlestOnesPlace) {
    install(authority.issue());
    start("0", kFewDescriptors);
    Client first(service->tlsPort(), authority);
    ASSERT_TRUE(first.send("<13>first\n"));
    ASSERT_TRUE(waitForMessages(1));
    std::vector<std::unique_ptr<Client>> others;
    for (std::uint64_t i = 0; i < kFewDescriptors; ++i) {
        others.push_back(std::make_unique<Client>(service->tlsPort(), authority));
    }
    EXPECT_TRUE(first.isRefused());
    EXPECT_TRUE(others.back()->send("<13>last\n"));
    EXPECT_TRUE(waitForMessages(2));
    service->terminate();
    EXPECT_THAT(service->journal(), Not(HasSubstr(", connections closed 0")));
    EXPECT_THAT(service->journal(), HasSubstr(", closed unread 0"));
}

// Whoever begins handshakes and does not end them takes nobody's place but its own.
TEST_F(TlsTest, SlowHandshakesTakeNobodyElsesPlace) {
    install(authority.issue());
    start("0", kFewDescriptors);
    Client quiet(testing::connectFrom(2, service->tlsPort()), authority);
    ASSERT_TRUE(quiet.isConnected());
    const UniqueFd plain = testing::connectFrom(3, service->port());
    std::vector<UniqueFd> slow;
    for (std::uint64_t i = 0; i < 3 * kFewDescriptors; ++i) {
        slow.push_back(connectTo(service->tlsPort()));
        EXPECT_EQ(send(slow.back().get(), "\x16\x03\x01\x02\x00\x01", 6, MSG_NOSIGNAL), 6);
    }
    // Room was made for each of them before this one is taken on.
    Client late(testing::connectFrom(4, service->tlsPort()), authority);
    ASSERT_TRUE(late.send("<13>late\n"));
    ASSERT_TRUE(waitForMessages(1));
    ASSERT_TRUE(quiet.send("<13>quiet\n"));
    ASSERT_TRUE(waitForMessages(2));
    ASSERT_EQ(send(plain.get(), "<13>plain\n", 10, MSG_NOSIGNAL), 10);
    ASSERT_TRUE(waitForMessages(3));
    EXPECT_THAT(messages(), ElementsAre("late", "quiet", "plain"));
    service->terminate();
    EXPECT_THAT(service->journal(), Not(HasSubstr(", connections closed 0")));
}

TEST_F(TlsTest, LosesNoMessageBehindAnOddFrame) {
    constexpr std::size_t kMessages = 5'000;
    install(authority.issue());
    start();
    std::size_t count = 0;
    for (const std::string odd :
         {"12 no priority.", "\xEF\xBB\xBF", "13 <13>Z\xC3\xBCrich 80", "8 <13>abcdjunk"}) {
        std::string bytes = "9 <13>begin" + odd;
        for (std::size_t i = 0; i < kMessages; ++i) {
            const std::string message = "<13>number " + std::to_string(i);
            bytes += std::to_string(message.size()) + ' ' + message;
        }
        Client client(service->tlsPort(), authority);
        for (std::size_t at = 0; at < bytes.size(); at += 777) {
            ASSERT_TRUE(client.send(std::string_view(bytes).substr(at, 777)));
        }
        client.close();
        ASSERT_TRUE(waitUntil([&] {
            const auto stored = messages();
            return stored.size() > count + kMessages &&
                   stored.back() == "number " + std::to_string(kMessages - 1);
        }));
        const auto stored = messages();
        count = stored.size();
        for (std::size_t i = 0; i < kMessages; ++i) {
            ASSERT_EQ(stored[count - kMessages + i], "number " + std::to_string(i));
        }
    }
}

TEST_F(TlsTest, ListensOnlyWithACertificate) {
    start();
    EXPECT_EQ(service->tlsPort(), 0);
    EXPECT_THAT(service->journal(), Not(HasSubstr("TLS")));
    install(authority.issue());
    reload();
    ASSERT_TRUE(service->waitForJournal("Listening for TLS on port "));
    const std::uint16_t port = service->tlsPort();
    Client client(port, authority);
    EXPECT_TRUE(client.isConnected());
    EXPECT_TRUE(client.send("<13>whole\n<13>unfinished"));
    ASSERT_TRUE(waitUntil([&] { return !messages().empty() && messages().back() == "whole"; }));
    std::filesystem::remove_all(folder.path() / "tls");
    reload();
    const auto stored = messages();
    EXPECT_EQ(std::ranges::count(stored, "unfinished"), 1);
    ASSERT_TRUE(service->waitForJournal(
        "The TLS certificate was removed; messages over TLS are no longer received"));
    EXPECT_TRUE(client.isRefused());
    EXPECT_FALSE(connectTo(port).isOpen());
    EXPECT_EQ(service->terminate(), 0);
}

TEST_F(TlsTest, StoresWhatHasArrivedWhenTheCertificateGoes) {
    install(authority.issue());
    start();
    Client client(service->tlsPort(), authority);
    ASSERT_TRUE(client.send("<13>first\n"));
    ASSERT_TRUE(waitForMessages(1));
    // The signal is looked at before the connection.
    ::kill(service->pid(), SIGSTOP);
    siginfo_t stopped{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(service->pid()), &stopped, WSTOPPED), 0);
    ASSERT_TRUE(client.send("<13>held\n<13>unfinished"));
    std::filesystem::remove_all(folder.path() / "tls");
    ::kill(service->pid(), SIGHUP);
    ::kill(service->pid(), SIGCONT);
    ASSERT_TRUE(service->waitForJournal(
        "The TLS certificate was removed; messages over TLS are no longer received"));
    EXPECT_TRUE(client.isRefused());
    EXPECT_THAT(messages(), ElementsAre("first", "held", "unfinished"));
}

TEST_F(TlsTest, TakesANewCertificateIntoUse) {
    install(authority.issue());
    start();
    Client early(service->tlsPort(), authority);
    const TestAuthority renewed("Renewed");
    install(renewed.issue());
    reload();
    EXPECT_TRUE(Client(service->tlsPort(), renewed).isConnected());
    EXPECT_FALSE(Client(service->tlsPort(), authority).isConnected());
    ASSERT_TRUE(early.send("<13>early\n"));
    EXPECT_TRUE(waitForMessages(2));
    struct Case {
        const char *name;
        std::string content;
    };
    const Case cases[] = {{"tls/key.pem", authority.issue().key},
                          {"tls/key.pem", "no key"},
                          {"tls/cert.pem", ""},
                          {"tls/ca.pem", "no certificate"}};
    for (const Case &c : cases) {
        // A problem that is the same as the last time is not said again.
        install(renewed.issue());
        std::filesystem::remove(folder.path() / "tls/ca.pem");
        reload();
        const std::size_t begin = service->journal().size();
        const auto file = folder.write(c.name, c.content);
        reload();
        EXPECT_TRUE(waitUntil([&] {
            return service->journal().find(file.string() + " cannot be used: ", begin) !=
                   std::string::npos;
        })) << c.name;
        EXPECT_TRUE(Client(service->tlsPort(), renewed).isConnected()) << c.name;
    }
}

TEST_F(TlsTest, APortThatIsTakenEndsNothingElse) {
    install(authority.issue());
    const UniqueFd taken(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    ASSERT_EQ(bind(taken.get(), generic, length), 0);
    ASSERT_EQ(listen(taken.get(), 1), 0);
    ASSERT_EQ(getsockname(taken.get(), generic, &length), 0);
    const std::string port = std::to_string(ntohs(address.sin_port));
    start(port);
    EXPECT_THAT(service->journal(),
                HasSubstr("TLS: Port " + port + " cannot be opened: Address already in use"));
    const UniqueFd plain = connectTo(service->port());
    EXPECT_EQ(send(plain.get(), "<13>plain\n", 10, MSG_NOSIGNAL), 10);
    EXPECT_TRUE(waitForMessages(1));
}

}  // namespace
}  // namespace quorbel
