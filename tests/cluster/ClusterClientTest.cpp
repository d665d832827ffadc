#include "cluster/ClusterClient.h"
#include "cluster/CuttingRelay.h"
#include "cluster/HttpStandIn.h"
#include "support/LoopbackPorts.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

namespace quorbel {
namespace {

using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::EndsWith;
using testing::freePort;
using ::testing::HasSubstr;
using testing::HttpStandIn;
using ::testing::Not;
using ::testing::StartsWith;
using testing::TemporaryFolder;
using testing::TestAuthority;

const std::atomic<bool> kGoOn = false;

HttpStandIn::Answer always(const std::string &status, const std::string &body = "") {
    return [bytes = HttpStandIn::answer(status, body)](const HttpStandIn::Request & /*request*/) {
        return bytes;
    };
}

std::string insertInto(const ClusterConnection &connection) {
    return ClusterClient(connection).insert("INSERT INTO a.b FORMAT RowBinary", "rows", kGoOn);
}

std::string nowhere() {
    return "http://127.0.0.1:" + std::to_string(freePort());
}

TEST(ClusterClientTest, AnInsertIsPackedAndNamesItsStatement) {
    HttpStandIn server(always("200 OK"));
    EXPECT_EQ(insertInto({.servers = {server.address()}}), "");
    ASSERT_EQ(server.requests().size(), 1U);
    const auto request = server.requests()[0];
    EXPECT_THAT(request.head,
                StartsWith("POST /?insert_distributed_sync=1&"
                           "query=INSERT%20INTO%20a.b%20FORMAT%20RowBinary HTTP/1.1\r\n"));
    EXPECT_THAT(request.head, HasSubstr("Content-Encoding: gzip"));
    EXPECT_THAT(request.head, Not(HasSubstr("Authorization")));
    EXPECT_THAT(request.body, StartsWith("\x1f\x8b"));
}

TEST(ClusterClientTest, ThePasswordIsReadAnewAndStandsInNoAddress) {
    const TemporaryFolder folder;
    const auto file = folder.write("password", "first\nnot this");
    HttpStandIn server(always("200 OK"));
    ClusterClient client(
        {.servers = {server.address()}, .user = "who", .passwordFile = file.string()});
    EXPECT_EQ(client.insert("x", "rows", kGoOn), "");
    folder.write("password", "second");
    EXPECT_EQ(client.insert("x", "rows", kGoOn), "");
    EXPECT_THAT(server.requests()[0].head, HasSubstr("Authorization: Basic d2hvOmZpcnN0\r\n"));
    EXPECT_THAT(server.requests()[1].head, HasSubstr("Authorization: Basic d2hvOnNlY29uZA=="));
    std::filesystem::remove(file);
    EXPECT_THAT(client.insert("x", "rows", kGoOn),
                EndsWith("the password cannot be read from " + file.string()));
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST(ClusterClientTest, WhatAnswersMeanIsOneLine) {
    const std::string flood(3'000'000, 'x');
    struct {
        std::string status, body, problem;
    } const cases[] = {
        {"500 Error", "Code: 60, e.displayText() = no table\nstack\n",
         "Code: 60, e.displayText() = no table"},
        {"404 Not found", "", "it answers with HTTP status 404"},
        {"204 No content", "", "it answers with HTTP status 204"},
        {"302 Elsewhere\r\nLocation: http://127.0.0.1:1/", "", "it answers with HTTP status 302"},
        {"500 Error", "a\x1b[31mb\xff", "a?[31mb?"},
        {"500 Error", flood, std::string(500, 'x') + "..."},
        {"200 OK", flood, ""},
    };
    for (const auto &[status, body, problem] : cases) {
        HttpStandIn server(always(status, body));
        const std::string expected = problem.empty() ? "" : server.address() + ": " + problem;
        EXPECT_EQ(insertInto({.servers = {server.address()}}), expected) << status;
    }
}

TEST(ClusterClientTest, WhatIsNoHttpIsAProblem) {
    for (const std::string bytes : {"", "\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nx",
                                    "220 mail.example ESMTP\r\n", "HTTP/1.1 200 OK"}) {
        HttpStandIn server([&](const HttpStandIn::Request & /*request*/) { return bytes; });
        EXPECT_THAT(insertInto({.servers = {server.address()}}), StartsWith(server.address()))
            << bytes;
    }
}

TEST(ClusterClientTest, AnotherServerTakesOver) {
    HttpStandIn broken(always("500 Error", "broken"));
    HttpStandIn good(always("200 OK"));
    ClusterClient client({.servers = {nowhere(), broken.address(), good.address()}});
    EXPECT_EQ(client.insert("x", "rows", kGoOn), "");
    EXPECT_EQ(client.insert("x", "rows", kGoOn), "");
    EXPECT_EQ(broken.requests().size(), 1U);  // it stays with the one that works
    EXPECT_EQ(good.requests().size(), 2U);
}

TEST(ClusterClientTest, TheOtherServerGetsAllOfIt) {
    HttpStandIn broken(always("500 Error", "broken"));
    HttpStandIn good(always("200 OK"));
    const std::string rows(1'000'000, 'x');
    ClusterClient client({.servers = {broken.address(), good.address()}});
    EXPECT_EQ(client.insert("x", rows, kGoOn), "");
    EXPECT_EQ(good.requests().at(0).body, broken.requests().at(0).body);
}

TEST(ClusterClientTest, NobodyIsThere) {
    const std::string last = nowhere();
    EXPECT_THAT(insertInto({.servers = {nowhere(), last}}), StartsWith(last + ": "));
    EXPECT_EQ(insertInto({}), "There is no server");
}

TEST(ClusterClientTest, SilenceEnds) {
    HttpStandIn silent([](const auto & /*request*/) { return std::nullopt; });
    EXPECT_EQ(insertInto({.servers = {silent.address()}, .toInsert = milliseconds(100)}),
              silent.address() + ": it did not answer in time");
    ClusterClient client({.servers = {silent.address()}, .toSayMore = milliseconds(1000)});
    EXPECT_EQ(client.query(
                  "x", [](auto) { return true; }, kGoOn),
              silent.address() + ": it did not answer in time");
}

TEST(ClusterClientTest, AStopEndsAWait) {
    HttpStandIn silent([](const auto & /*request*/) { return std::nullopt; });
    std::atomic<bool> stop = false;
    std::string problem;
    std::thread sender([&] {
        problem = ClusterClient({.servers = {silent.address()}}).insert("x", "rows", stop);
    });
    EXPECT_TRUE(testing::waitUntil([&] { return !silent.requests().empty(); }));
    stop = true;
    sender.join();
    EXPECT_EQ(problem, silent.address() + ": stopped");
}

TEST(ClusterClientTest, ACutConnectionIsAProblem) {
    HttpStandIn server(always("200 OK"));
    testing::CuttingRelay relay(server.port());
    const std::string address = "http://127.0.0.1:" + std::to_string(relay.port());
    for (const int bytes : {0, 20, 1'000'000}) {
        relay.cutAfter(bytes);
        EXPECT_EQ(insertInto({.servers = {address}}), address + ": the connection broke") << bytes;
    }
    EXPECT_EQ(relay.cuts(), 3);
    EXPECT_EQ(insertInto({.servers = {address}}), "");
}

TEST(ClusterClientTest, AnAnswerThatHasBegunIsNotAskedForAgain) {
    HttpStandIn torn([](const auto & /*request*/) {
        return "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf";
    });
    HttpStandIn good(always("200 OK", "whole"));
    std::string answer;
    const auto take = [&answer](std::string_view bytes) {
        answer += bytes;
        return true;
    };
    ClusterClient client({.servers = {torn.address(), good.address()}});
    EXPECT_EQ(client.query("x", take, kGoOn), torn.address() + ": the connection broke");
    EXPECT_EQ(answer, "half");
    EXPECT_TRUE(good.requests().empty());
}

TEST(ClusterClientTest, EnoughIsNoProblem) {
    HttpStandIn server(always("200 OK", std::string(1'000'000, 'x')));
    ClusterClient client({.servers = {server.address()}});
    EXPECT_EQ(client.query(
                  "x", [](auto) { return false; }, kGoOn),
              "");
}

TEST(ClusterClientTest, OnlyATrustedCertificateOfTheServerIsGood) {
    const TestAuthority authority;
    const TestAuthority other("Other");
    const TemporaryFolder folder;
    const auto file = folder.write("authority.pem", authority.certificate());
    struct {
        TestAuthority::Issued identity;
        std::string problem;
    } const cases[] = {
        {authority.issue(), ""},
        {authority.issueExpired(), "expired"},
        {authority.issue("DNS:elsewhere.example"), "127.0.0.1"},
        {other.issue(), "issuer"},
    };
    for (const auto &[identity, problem] : cases) {
        HttpStandIn server(always("200 OK"), identity);
        const std::string said =
            insertInto({.servers = {server.address("https")}, .authorityFile = file.string()});
        EXPECT_EQ(said.empty(), problem.empty()) << said;
        EXPECT_THAT(said, HasSubstr(problem));
        EXPECT_EQ(server.requests().size(), problem.empty() ? 1U : 0U);
    }
    // The system's authorities do not know the test's.
    HttpStandIn server(always("200 OK"), authority.issue());
    EXPECT_THAT(insertInto({.servers = {server.address("https")}}), HasSubstr("certificate"));
}

}  // namespace
}  // namespace quorbel
