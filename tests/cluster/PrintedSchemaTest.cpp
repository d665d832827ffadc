// What QuorbelSrv --cluster-schema prints.

#include "cluster/ClusterFixture.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace quorbel {
namespace {

using testing::ClickHouse;
using ::testing::HasSubstr;
using testing::TemporaryFolder;

struct Printed {
    int status;
    std::string text;  ///< both outputs
};

/// With arguments as a shell takes them.
Printed print(const std::string &arguments) {
    const std::string command = QUORBEL_SRV_PATH " --cluster-schema " + arguments + " 2>&1";
    FILE *pipe = popen(command.c_str(), "r");
    Printed printed{};
    std::array<char, 4096> bytes{};
    while (const std::size_t count = fread(bytes.data(), 1, bytes.size(), pipe)) {
        printed.text.append(bytes.data(), count);
    }
    printed.status = WEXITSTATUS(pclose(pipe));
    return printed;
}

struct PrintedSchemaTest : ::testing::Test {
    [[nodiscard]] Printed printFor(const std::string &configuration,
                                   const std::string &name = "") const {
        return print(name + " --config " + folder.write("conf", configuration).string());
    }
    TemporaryFolder folder;
    const std::string two =
        "[Cluster \"a\"]\nServers=http://x:8123\nDatabase=da\n"
        "[Cluster \"b\"]\nServers=http://y:1, http://z:2\nTable=tb\n";
};

TEST_F(PrintedSchemaTest, IsThatOfTheClusterThatIsMeant) {
    EXPECT_EQ(print("--config /nonexistent").text, clusterSchema({}, {}));
    EXPECT_EQ(printFor("[Cluster \"a\"]\nServers=http://x:8123\nDatabase=da\n").text,
              clusterSchema({"da", "events"}, {"x"}));
    EXPECT_EQ(printFor(two, "a").text, clusterSchema({"da", "events"}, {"x"}));
    EXPECT_EQ(printFor(two, "b").text, clusterSchema({"quorbel", "tb"}, {"y", "z"}));
    EXPECT_EQ(printFor(two, "b").status, 0);
}

TEST_F(PrintedSchemaTest, WhatIsWrongIsSaid) {
    struct {
        Printed printed;
        const char *problem;
    } const cases[] = {
        {printFor(two), "names several clusters: say which one"},
        {printFor(two, "c"), "names no cluster \"c\""},
        {printFor("[Cluster \"a\"]\nServers=x\n"), "conf:2: "},
        {print("a b"), "Usage: "},
        {print("--config"), "Usage: "},
        {print("> /dev/full"), ""},
    };
    for (const auto &[printed, problem] : cases) {
        EXPECT_EQ(printed.status, 1) << problem;
        EXPECT_THAT(printed.text, HasSubstr(problem));
    }
}

TEST_F(PrintedSchemaTest, AServerTakesIt) {
    if (!ClickHouse::isThere()) {
        GTEST_SKIP() << ClickHouse::kMissing;
    }
    ClickHouse server(folder.path() / "server");
    server.setShards({server.shardPort(), server.shardPort()});
    ASSERT_TRUE(server.start());
    EXPECT_EQ(applySchema(server, folder, printFor(two, "a").text), "");
    EXPECT_EQ(server.ask("SELECT count() FROM da.events_once"), "0");
    EXPECT_EQ(applySchema(server, folder, printFor(two, "b").text), "");
    EXPECT_EQ(server.ask("SELECT count() FROM quorbel.tb_once"), "0");
}

}  // namespace
}  // namespace quorbel
