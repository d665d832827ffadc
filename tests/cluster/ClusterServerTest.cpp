// Against the real column store.

#include "cluster/ClusterFixture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::applySchema;
using testing::askCluster;
using testing::ClickHouse;
using testing::ClusterFixture;
using testing::eventOf;
using ::testing::HasSubstr;
using testing::insertRows;
using ::testing::StartsWith;
using testing::TemporaryFolder;
using testing::TestAuthority;

class ClusterServerTest : public ClusterFixture {
protected:
    struct Found {
        std::vector<std::string> messages;
        std::string problem;
    };
    /// By what the answer's reader makes of it.
    static Found find(const ClusterFilter &filter, const ClusterPlace &place = {}) {
        Found found;
        ClusterAnswer answer([&found](const LogLine &event) {
            found.messages.emplace_back(event.message);
            return true;
        });
        const std::atomic<bool> goOn = false;
        found.problem =
            ClusterClient(server().connection())
                .query(
                    selectEvents(place, filter),
                    [&answer](std::string_view bytes) { return answer.add(bytes); }, goOn);
        found.problem += answer.problem();
        return found;
    }
};

TEST_F(ClusterServerTest, TheSchemaMayBeRunTwice) {
    const TemporaryFolder folder;
    EXPECT_EQ(applySchema(server(), folder, clusterSchema({}, {})), "");
    EXPECT_EQ(applySchema(server(), folder, clusterSchema({"other", "rows"}, {})), "");
    EXPECT_EQ(ask("SELECT count() FROM other.rows_once"), "0");
}

TEST_F(ClusterServerTest, ARepeatedBatchIsThereOnce) {
    ClusterRows rows("here");
    for (std::uint64_t i = 0; i < 1000; ++i) {
        rows.add(i, eventOf(std::to_string(1700000000 + i / 100), "User.Debug", "h", "same"));
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(insertRows(server().connection(), rows), "");
        EXPECT_EQ(ask("SELECT count() FROM quorbel.events_once"), "1000");
    }
    // Before the server merges them by itself, and after.
    EXPECT_EQ(ask("OPTIMIZE TABLE quorbel.events FINAL"), "");
    EXPECT_EQ(ask("SELECT count() FROM quorbel.events"), "1000");
}

TEST_F(ClusterServerTest, AnotherCollectorsRowsAreOthers) {
    for (const char *collector : {"here", "there"}) {
        ClusterRows rows(collector);
        rows.add(7, eventOf("1700000000", "User.Debug", "h", "same"));
        EXPECT_EQ(insertRows(server().connection(), rows), "");
    }
    EXPECT_EQ(ask("SELECT count() FROM quorbel.events_once"), "2");
}

TEST_F(ClusterServerTest, FieldsComeBackAsTheyWere) {
    const std::vector<std::string> texts = {"plain",    "a,b, c",  "quote ' \" ` \\ \\n \\N",
                                            "tab\t.",   "Größe 😀", std::string("nul\0.", 5),
                                            "\xff\xfe", ""};
    ClusterRows rows("here");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        rows.add(i, eventOf(std::to_string(1700000000 + i), "Local7.Error", "h", texts[i]));
    }
    EXPECT_EQ(insertRows(server().connection(), rows), "");
    const Found found = find({});
    EXPECT_EQ(found.problem, "");
    EXPECT_EQ(found.messages, texts);
    EXPECT_EQ(ask("SELECT * FROM quorbel.events_once WHERE message = 'plain'"),
              "2023-11-14 22:13:20\t3\tLocal7\tLocal7.Error\th\tplain\there\t0");
}

TEST_F(ClusterServerTest, FiltersMeanWhatTheySay) {
    ClusterRows rows("here");
    rows.add(0, eventOf("100", "Kern.Emergency", "alpha", "zero"));
    rows.add(1, eventOf("200", "Local7.Error", "beta", "ONE a.b"));
    rows.add(2, eventOf("300", "Local70.Debug", "gamma", "two axb"));
    rows.add(3, eventOf("400", "Odd", "delta", "thr\u212aee \u017ft\u03c2"));
    rows.add(4, eventOf("4294967295", "User.Error Alert", "epsilon", "it's \\ four"));
    ASSERT_EQ(insertRows(server().connection(), rows), "");
    struct {
        const char *what;
        ClusterFilter filter;
        std::string numbers;
    } const cases[] = {
        {"nothing", {}, "01234"},
        {"from", {.from = 200}, "1234"},
        {"until", {.until = 200}, "0"},
        {"ever", {.from = -5, .until = INT64_MAX}, "01234"},
        {"later", {.from = INT64_MAX}, ""},
        {"severity", {.leastSeverity = 3}, "014"},
        {"class", {.classes = 1U << 3U}, "14"},
        {"classes", {.classes = 1U << 1U | 1U << kUnknownClass}, "34"},
        {"facility", {.facility = "Local7"}, "1"},
        {"all of a priority", {.facility = "Odd"}, "3"},
        {"in a message", {.texts = {{.text = "one"}}}, "1"},
        {"in a host", {.texts = {{.text = "ETA"}}}, "1"},
        {"in a priority", {.texts = {{.text = "local7"}}}, "12"},
        {"by case", {.texts = {{.text = "one", .isCaseSensitive = true}}}, ""},
        {"literally", {.texts = {{.text = "a.b"}}}, "1"},
        {"not", {.texts = {{.text = "one", .isNegated = true}}}, "0234"},
        {"both", {.texts = {{.text = "t"}, {.text = "w"}}}, "2"},
        {"a quotation mark", {.texts = {{.text = "it's \\ F"}}}, "4"},
        {"letters that fold", {.texts = {{.text = "thrKee s"}}}, "3"},
        {"more that fold", {.texts = {{.text = "ST\u03a3"}}}, "3"},
        {"an injection", {.texts = {{.text = "') OR 1 OR match('', '"}}}, ""},
    };
    for (const auto &[what, filter, numbers] : cases) {
        const std::string sql = selectEvents({}, filter);
        std::string found;
        for (const std::string &message : find(filter).messages) {
            const auto number =
                ask("SELECT number FROM quorbel.events_once WHERE message = " + sqlText(message));
            found += number;
        }
        EXPECT_EQ(found, numbers) << what << ": " << sql;
        EXPECT_EQ(find(filter).problem, "") << what;
    }
}

TEST_F(ClusterServerTest, CountsOfQuarters) {
    ClusterRows rows("here");
    rows.add(0, eventOf("899", "User.Debug", "h", "a"));
    rows.add(1, eventOf("900", "User.Debug", "h", "b"));
    rows.add(2, eventOf("1799", "User.Debug", "h", "c"));
    rows.add(3, eventOf("1799", "User.Error", "h", "c"));
    ASSERT_EQ(insertRows(server().connection(), rows), "");
    ASSERT_EQ(insertRows(server().connection(), rows), "");
    EXPECT_EQ(ask("SELECT * FROM (" +
                  selectCounts({}, {.leastSeverity = 7})
                      .erase(selectCounts({}, {.leastSeverity = 7}).find(" FORMAT")) +
                  ") ORDER BY quarter, priority"),
              "0\tUser.Debug\th\t1\n900\tUser.Debug\th\t2\n900\tUser.Error\th\t1");
}

TEST_F(ClusterServerTest, ProblemsSayWhatTheServerSays) {
    ClusterRows rows("here");
    rows.add(0, eventOf("0", "User.Debug", "h", "m"));
    EXPECT_THAT(insertRows(server().connection(), rows, {"quorbel", "missing"}),
                AllOf(StartsWith(server().address() + ": "), HasSubstr("missing")));
    EXPECT_THAT(find({}, {"quorbel", "missing"}).problem, HasSubstr("missing"));
    ClusterConnection stranger = server().connection();
    stranger.passwordFile.clear();
    EXPECT_THAT(insertRows(stranger, rows), HasSubstr("Password"));
    EXPECT_EQ(ask("SELECT count() FROM quorbel.events"), "0");
}

/// An error that comes when a part of the answer is on its way.
TEST_F(ClusterServerTest, AnErrorAmongTheRowsIsAProblem) {
    ClusterAnswer answer([](const LogLine & /*event*/) { return true; });
    const std::atomic<bool> goOn = false;
    const std::string problem =
        ClusterClient(server().connection())
            .query(
                "SELECT number, 'p', 'h', throwIf(number = 3000000) FROM system.numbers"
                " LIMIT 4000000 FORMAT TabSeparated",
                [&answer](std::string_view bytes) { return answer.add(bytes); }, goOn);
    EXPECT_THAT(problem + answer.problem(), HasSubstr("throwIf"));
}

/// The real server's own TLS, as a collector has it: by an authority's file, and the system's.
struct ClusterHttpsTest : ::testing::Test {
    void SetUp() override {
        if (!ClickHouse::isThere()) {
            GTEST_SKIP() << ClickHouse::kMissing;
        }
    }
    [[nodiscard]] bool startAs(const TestAuthority::Issued &identity) {
        server.kill();
        server.setIdentity(identity);
        return server.start();
    }
    [[nodiscard]] ClusterConnection connection(const TestAuthority &trusted) const {
        ClusterConnection connection = server.connection();
        connection.servers = {"https://127.0.0.1:" + std::to_string(server.httpsPort())};
        connection.authorityFile = folder.write("authority.pem", trusted.certificate()).string();
        return connection;
    }

    const TestAuthority authority;
    const TestAuthority other{"Other"};
    TemporaryFolder folder;
    ClickHouse server{folder.path() / "server"};
};

TEST_F(ClusterHttpsTest, SchemaRowsAndQuestions) {
    ASSERT_TRUE(startAs(authority.issue()));
    // Statement after statement, as a tool for HTTP would.
    std::string schema = clusterSchema({}, {});
    for (std::size_t end = 0; (end = schema.find(";\n")) != std::string::npos;
         schema.erase(0, end + 2)) {
        const std::string statement = schema.substr(0, end);
        if (statement.find("\nCREATE ") != std::string::npos) {
            EXPECT_EQ(askCluster(connection(authority), statement), "");
        }
    }
    // Longer than what TLS sends in a record, and more than one request a connection.
    ClusterRows rows("here");
    for (std::uint64_t i = 0; i < 20'000; ++i) {
        rows.add(i, eventOf("1700000000", "User.Debug", "h", std::to_string(i)));
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(insertRows(connection(authority), rows), "");
        EXPECT_EQ(askCluster(connection(authority), "SELECT count() FROM quorbel.events_once"),
                  "20000");
    }
}

TEST_F(ClusterHttpsTest, OnlyTheServerThatIsMeantGetsRows) {
    struct {
        TestAuthority::Issued identity;
        const TestAuthority &trusted;
        const char *problem;
    } const cases[] = {
        {authority.issue(), other, "unable to get local issuer certificate"},
        {authority.issue("DNS:elsewhere.example"), authority, "127.0.0.1"},
        {authority.issueExpired(), authority, "certificate has expired"},
    };
    for (const auto &[identity, trusted, problem] : cases) {
        ASSERT_TRUE(startAs(identity));
        ASSERT_EQ(applySchema(server, folder, clusterSchema({}, {})), "");
        ClusterRows rows("here");
        rows.add(1, eventOf("1700000000", "User.Debug", "h", "m"));
        EXPECT_THAT(insertRows(connection(trusted), rows),
                    AllOf(StartsWith("https://127.0.0.1:"), HasSubstr(problem)));
        EXPECT_EQ(server.ask("SELECT count() FROM quorbel.events"), "0");
    }
}

struct TwoShardsTest : ::testing::Test {
    void SetUp() override {
        if (!ClickHouse::isThere()) {
            GTEST_SKIP() << ClickHouse::kMissing;
        }
        for (ClickHouse *shard : {&one, &two}) {
            shard->setShards({one.shardPort(), two.shardPort()});
            ASSERT_TRUE(shard->start());
            ASSERT_EQ(applySchema(*shard, folder, clusterSchema({}, {"one", "two"})), "");
        }
    }
    [[nodiscard]] ClusterConnection both() const {
        ClusterConnection connection = one.connection();
        connection.servers.push_back(two.address());
        return connection;
    }
    [[nodiscard]] static std::uint64_t countIn(const ClickHouse &shard, const std::string &table) {
        return std::stoull(shard.ask("SELECT count() FROM quorbel." + table));
    }

    TemporaryFolder folder;
    ClickHouse one{folder.path() / "one"};
    ClickHouse two{folder.path() / "two"};
};

TEST_F(TwoShardsTest, ARowsRepeatsFallOnOneShard) {
    for (std::uint64_t batch = 0; batch < 20; ++batch) {
        ClusterRows rows("here");
        for (std::uint64_t i = 0; i < 100; ++i) {
            rows.add(batch * 700'000 + i, eventOf("1700000000", "User.Debug", "h", "m"));
        }
        EXPECT_EQ(insertRows(one.connection(), rows), "");
        EXPECT_EQ(insertRows(two.connection(), rows), "");
    }
    for (const ClickHouse *shard : {&one, &two}) {
        EXPECT_EQ(countIn(*shard, "events_once"), 2000U);
        EXPECT_GE(countIn(*shard, "events_shard"), 200U);
        EXPECT_EQ(shard->ask("OPTIMIZE TABLE quorbel.events_shard FINAL"), "");
    }
    EXPECT_EQ(countIn(one, "events_shard") + countIn(two, "events_shard"), 2000U);
}

TEST_F(TwoShardsTest, WhatAShardDidNotTakeIsNoSuccess) {
    const auto insertAll = [this](std::uint64_t batch) {
        ClusterRows rows("here");
        for (std::uint64_t i = 0; i < 4; ++i) {
            rows.add((batch * 4 + i) * 1'000'000, eventOf("1700000000", "User.Debug", "h", "m"));
        }
        return insertRows(both(), rows);
    };
    EXPECT_EQ(insertAll(0), "");
    two.kill();
    std::string problem;
    std::uint64_t batch = 1;
    for (; batch < 20 && problem.empty(); ++batch) {
        problem = insertAll(batch);
    }
    EXPECT_NE(problem, "");
    EXPECT_TRUE(two.start());
    for (std::uint64_t again = 1; again < batch; ++again) {
        EXPECT_EQ(insertAll(again), "");
    }
    EXPECT_EQ(countIn(one, "events_once"), batch * 4);
    EXPECT_EQ(countIn(two, "events_once"), batch * 4);
}

}  // namespace
}  // namespace quorbel
