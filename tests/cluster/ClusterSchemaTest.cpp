#include "cluster/ClusterSchema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(ClusterSchemaTest, NamesAreThoseOfThePlace) {
    const ClusterPlace place{"logs", "syslog"};
    EXPECT_EQ(clusterView(place), "logs.syslog_once");
    EXPECT_EQ(clusterInsert(place),
              "INSERT INTO logs.syslog (time, severity, facility, priority, host, message, "
              "collector, number) FORMAT RowBinary");
    for (const auto &hosts : {std::vector<std::string>{"a"}, {"a", "b"}}) {
        const std::string sql = clusterSchema(place, hosts);
        EXPECT_THAT(sql, Not(HasSubstr("quorbel.")));
        EXPECT_THAT(sql, HasSubstr("CREATE VIEW IF NOT EXISTS logs.syslog_once AS"));
    }
}

TEST(ClusterSchemaTest, SeveralServersAreShards) {
    EXPECT_THAT(clusterSchema({}, {"a"}), Not(HasSubstr("Distributed")));
    const std::string sql = clusterSchema({}, {"one", "2001:db8::1"});
    EXPECT_THAT(sql, HasSubstr("<host>one</host>"));
    EXPECT_THAT(sql, HasSubstr("<host>2001:db8::1</host>"));
    EXPECT_THAT(sql, HasSubstr("Distributed(quorbel, quorbel, events_shard,"));
}

TEST(ClusterSchemaTest, HostsOfServers) {
    EXPECT_THAT(hostsOfServers({}), IsEmpty());
    EXPECT_THAT(hostsOfServers({"https://a.example:8443", "http://b", "https://a.example:8444",
                                "https://[2001:db8::1]:8443"}),
                ElementsAre("a.example", "b", "2001:db8::1"));
}

}  // namespace
}  // namespace quorbel
