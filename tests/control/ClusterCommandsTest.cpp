// `find --cluster` and `stats --cluster`, against the real column store: they say what they say of
// the same events in log files.

#include "cluster/ClusterFixture.h"
#include "cluster/HttpStandIn.h"
#include "control/ControlProcess.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::AllOf;
using testing::ClusterFixture;
using testing::ControlResult;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TemporaryFolder;
using Arguments = std::vector<std::string>;

struct ClusterCommandsTest : ClusterFixture {
    /// The same events into a log file and the cluster, there some of them twice.
    void store(const std::string &lines) {
        folder.write("2023-11-14.log", lines);
        ClusterRows rows("here");
        std::uint64_t number = 0;
        LogReader::readBytes(lines, [&](const LogLine &line) {
            rows.add(++number, line);
            return true;
        });
        for (int i = 0; i < 2; ++i) {
            ASSERT_EQ(testing::insertRows(server().connection(), rows), "");
        }
    }
    [[nodiscard]] std::string configuration(const std::string &more = "") const {
        return folder.write(
            "quorbelsrv.conf",
            "[Cluster \"main\"]\nServers=" + server().address() +
                "\nUser=quorbel\nPasswordFile=" + server().connection().passwordFile + '\n' + more);
    }
    [[nodiscard]] ControlResult run(Arguments arguments, const std::string &file) const {
        arguments.insert(arguments.end(), {"--config", file});
        return testing::runControl({.library = folder.path()}, arguments);
    }

    TemporaryFolder folder;
};

/// Times ascend, as they do where no clock is set back.
std::string someLines() {
    constexpr const char *kPriorities[] = {"Local7.Error",    "Auth.Notice", "Kern.Critical",
                                           "Cron.Debug",      "Odd",         "Daemon.Warning",
                                           "Local7.Error\xff"};
    constexpr const char *kHosts[] = {"10.0.0.5",
                                      "10.0.0.6",
                                      "gate",
                                      "GATE.example",
                                      "severe",
                                      "::ffff:10.0.0.5",
                                      "0:0:0:0:0:FFFF:0a00:0006",
                                      "2001:db8::1",
                                      "2001:0DB8:0::0001",
                                      "010.0.0.5",
                                      "10.0.0.5.6",
                                      "10.0.0",
                                      "0.0.0.0",
                                      "255.255.255.255",
                                      "10.0.0.0/8",
                                      "gate \xe2\x84\xaa",
                                      "\xe2\x84\xaa"
                                      "elvin",
                                      "kelvin",
                                      "Gr\xc3\xb6\xc3\x9f"
                                      "e",
                                      "\xff",
                                      "it's \\ \"odd\"",
                                      ""};
    constexpr const char *kMessages[] = {"disk full, retrying",
                                         "Login by root",
                                         "it's 100% \\ done",
                                         "2023 was a year",
                                         "Gr\xc3\xb6\xc3\x9f"
                                         "e",
                                         "Kelvin \xe2\x84\xaa",
                                         "\xff broken",
                                         "moderate"};
    std::mt19937 random;
    std::string lines;
    std::int64_t seconds = 1700000000;
    for (int i = 0; i < 5000; ++i) {
        seconds += static_cast<std::int64_t>(random() % 60);
        lines += std::to_string(seconds) + ',' + kPriorities[random() % std::size(kPriorities)] +
                 ',' + kHosts[random() % std::size(kHosts)] + ',' + kMessages[random() % 8] +
                 "\r\n";
    }
    return lines;
}

TEST_F(ClusterCommandsTest, TheySayWhatTheLogFilesSay) {
    store(someLines());
    const Arguments filters[] = {
        {},
        {"disk"},
        {"--contains-case", "login"},
        {"--lacks", "disk"},
        {"--lacks", "broken"},
        {"--lacks", "gate"},
        {"--lacks", "local7"},
        {"--lacks", "severe"},
        {"--lacks-case", "2023"},
        {"severe"},
        {"moderate"},
        {"2023"},
        {":0"},
        {"k"},
        {"GR\xc3\x96SSE"},
        {"gr\xc3\xb6\xc3\x9f"},
        {"it's 100% \\"},
        {"--matches", "^(disk|Login)"},
        {"--matches-not", "o"},
        {"--severity", "error"},
        {"--class", "Unknown"},
        {"--class", "Debug", "--class", "Notice"},
        {"--rating", "severe"},
        {"--facility", "local7"},
        {"--host", "10.0.0.0/24, !10.0.0.6"},
        {"--host", "10.0.0.5"},
        {"--host", "!10.0.0.5"},
        {"--host", "::ffff:10.0.0.6"},
        {"--host", "10.0.0.4/255.255.255.254, severe"},
        {"--host", "10.0.0.6/31"},
        {"--host", "8.0.0.0/5, !10.0.0.4/30"},
        {"--host", "!10.0.0.0/23, !192.0.0.0/2"},
        {"--host", "0.0.0.0/0"},
        {"--host", "!0.0.0.0/0"},
        {"--host", "0.0.0.0, 255.255.255.255"},
        {"--host", "!0.0.0.0/1, !128.0.0.0/1"},
        {"--host", "::/0"},
        {"--host", "!::/0"},
        {"--host", "::ffff:10.0.0.0/8"},
        {"--host", "::/80"},
        {"--host", "2001:db8::/32"},
        {"--host", "!2001:db8::1"},
        {"--host", "10.0.0.0/8, !10.0.0.0/8"},
        {"--host", "\"10.0.0.0/8\""},
        {"--host", "gate"},
        {"--host", "GATE, gate.EXAMPLE"},
        {"--host", "!GATE, !severe"},
        {"--host", "\"gate\""},
        {"--host", "\"Gate\""},
        {"--host", "!\"gate\""},
        {"--host", "\"\""},
        {"--host", "!\"\""},
        {"--host", "kelvin"},
        {"--host", "!KELVIN"},
        {"--host",
         "gr\xc3\x96\xc3\x9f"
         "e"},
        {"--host",
         "!gr\xc3\x96\xc3\x9f"
         "e"},
        {"--host", "\"it's \\ \"\"odd\"\"\""},
        {"--host", "IT'S \\ \"ODD\""},
        {"--host", "gate*"},
        {"--host", "!gate*, !10.0.0.5"},
        {"--host", "gate*, 10.0.0.5"},
        {"--from", "1700050000"},
        {"--until", "1700000001"},
        {"--from", "1700010000", "--until", "1700020000", "--severity", "notice", "--lacks",
         "root"},
    };
    const std::string file = configuration();
    for (Arguments filter : filters) {
        for (const char *command : {"find", "stats"}) {
            filter.insert(filter.begin(), command);
            const ControlResult files = run(filter, file);
            filter.emplace_back("--cluster");
            const ControlResult cluster = run(filter, file);
            EXPECT_EQ(cluster.complaint, "");
            EXPECT_EQ(cluster.status, files.status) << ::testing::PrintToString(filter);
            EXPECT_TRUE(cluster.output == files.output) << ::testing::PrintToString(filter);
            filter.pop_back();
            filter.erase(filter.begin());
        }
    }
    EXPECT_EQ(run({"find", "--cluster", "--json", "root"}, file).output,
              run({"find", "--json", "root"}, file).output);
}

/// What is sent to the cluster, so that it need not send all.
TEST_F(ClusterCommandsTest, HostsThatAreCertainAreLeftToTheCluster) {
    testing::HttpStandIn standIn(
        [](const auto & /*request*/) { return testing::HttpStandIn::answer("200 OK", ""); });
    const std::string file =
        folder.write("file.conf", "[Cluster \"a\"]\nServers=" + standIn.address());
    struct {
        const char *hosts;
        const char *condition;  ///< of the statement; none where nothing is certain
    } const cases[] = {
        {"\"gate\"", " WHERE ((host = 'gate')) "},
        {"gate, \"b\"", R"( WHERE ((match(host, '(?i:\\Agate\\z)')) OR (host = 'b')) )"},
        {"10.1.2.3/31", R"( WHERE ((position(host, ':') > 0 OR)"
                        R"( match(host, '(?:\\A(?:10)\\.(?:1)\\.(?:2)\\.(?:2|3)\\z)'))) )"},
        {"2001:db8::/32", " WHERE ((position(host, ':') > 0)) "},
        {"!Gate", " WHERE NOT (((lower(host) = lower('Gate'))) AND match(priority, "},
        {"gate, b*", ""},
        {"::/0", ""},
        {"\"\"", ""},
    };
    for (const auto &[hosts, condition] : cases) {
        for (const char *command : {"find", "stats"}) {
            EXPECT_EQ(run({command, "--cluster", "--host", hosts}, file).complaint, "");
            const std::string statement = standIn.requests().back().body;
            EXPECT_THAT(statement, HasSubstr(condition)) << hosts;
            EXPECT_EQ(statement.find("WHERE") == std::string::npos, *condition == '\0') << hosts;
        }
    }
}

TEST_F(ClusterCommandsTest, OnlyTheClusterIsAsked) {
    store("1700000000,User.Debug,h,both\r\n");
    folder.write("2023-11-15.log", "1700086400,User.Debug,h,only here\r\n");
    const std::string file = configuration();
    EXPECT_EQ(run({"find", "--cluster"}, file).output, "1700000000,User.Debug,h,both\n");
    std::filesystem::remove(folder.path() / "2023-11-14.log");
    EXPECT_EQ(run({"find", "--cluster-name", "main"}, file).output,
              "1700000000,User.Debug,h,both\n");
    EXPECT_EQ(run({"find"}, file).output, "1700086400,User.Debug,h,only here\n");
    EXPECT_EQ(run({"find", "--cluster", "nothing alike"}, file).status, 1);
}

TEST_F(ClusterCommandsTest, WhatIsWrongIsSaid) {
    const std::string address = server().address();
    struct {
        std::string configuration;
        Arguments arguments;
        std::string complaint;
    } const cases[] = {
        {"", {"--cluster"}, "names no cluster"},
        {"[Cluster \"a\"]\nServers=" + address, {"--cluster-name", "b"}, "names no cluster \"b\""},
        {"[Cluster \"a\"]\nServers=" + address + "\n[Cluster \"b\"]\nServers=" + address,
         {"--cluster"},
         "--cluster-name"},
        {"[Cluster \"a\"]\nServer=" + address, {"--cluster"}, "/file.conf:1: "},
        {"[Cluster \"a\"]\nServers=http://127.0.0.1:1", {"--cluster"}, "http://127.0.0.1:1: "},
        {"[Cluster \"a\"]\nTable=missing\nServers=" + address, {"--cluster"}, "missing"},
        {"[Cluster \"a\"]\nUser=quorbel\nPasswordFile=/nonexistent\nServers=" + address,
         {"--cluster"},
         "/nonexistent"},
    };
    for (const auto &[configuration, arguments, complaint] : cases) {
        const std::string file = folder.write("file.conf", configuration + '\n');
        for (const char *command : {"find", "stats"}) {
            Arguments all = arguments;
            all.insert(all.begin(), command);
            const ControlResult result = run(all, file);
            EXPECT_EQ(result.status, 3) << complaint;
            EXPECT_EQ(result.output, "");
            EXPECT_THAT(result.complaint, AllOf(StartsWith("quorbelctl: "), HasSubstr(complaint)));
        }
    }
}

}  // namespace
}  // namespace quorbel
