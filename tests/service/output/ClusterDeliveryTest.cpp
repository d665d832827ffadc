#include "cluster/ClusterFixture.h"
#include "cluster/HttpStandIn.h"
#include "service/output/ClusterDelivery.h"

#include <gmock/gmock.h>

namespace quorbel {
namespace {

using testing::ClusterFixture;
using ::testing::HasSubstr;
using testing::HttpStandIn;

const std::atomic<bool> kGoOn = false;

struct ClusterDeliveryTest : ClusterFixture {
    static ClusterSettings settings() {
        ClusterSettings settings;
        settings.servers = {server().address()};
        settings.user = "quorbel";
        settings.passwordFile = server().connection().passwordFile;
        return settings;
    }
    static EventFeed::Piece piece(std::uint64_t first, const std::string &lines) {
        return {first, static_cast<std::size_t>(std::ranges::count(lines, '\n')), lines};
    }
};

TEST_F(ClusterDeliveryTest, EachEventOfAPieceIsARow) {
    ClusterDelivery delivery(settings(), "here");
    const auto lines = piece(10,
                             "1700000000,User.Debug,h,one\r\nno event\r\n"
                             "1700000000,User.Debug,h,two\r\n");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(delivery.deliver(lines, kGoOn), std::nullopt);
        EXPECT_EQ(delivery.lastCount(), 2U);
    }
    EXPECT_EQ(ask("SELECT collector, number, message FROM quorbel.events_once ORDER BY number"),
              "here\t10\tone\nhere\t12\ttwo");
}

TEST_F(ClusterDeliveryTest, TheFilterLeavesOthersOutAndNumbersAsTheyAre) {
    ClusterSettings some = settings();
    ASSERT_EQ(some.filter.setSeverity("Error"), std::nullopt);
    ClusterDelivery delivery(some, "here");
    EXPECT_EQ(delivery.deliver(piece(5,
                                     "1700000000,User.Debug,h,one\r\n"
                                     "1700000000,User.Alert,h,two\r\n"),
                               kGoOn),
              std::nullopt);
    EXPECT_EQ(ask("SELECT number, message FROM quorbel.events_once"), "6\ttwo");
}

TEST_F(ClusterDeliveryTest, NothingForTheClusterIsNoRequest) {
    ClusterSettings none = settings();
    none.servers = {"http://127.0.0.1:1"};
    ASSERT_EQ(none.filter.setSeverity("Error"), std::nullopt);
    ClusterDelivery delivery(none, "here");
    EXPECT_EQ(delivery.deliver(piece(5, "1700000000,User.Debug,h,one\r\n"), kGoOn), std::nullopt);
    const auto problem = delivery.deliver(piece(6, "1700000000,User.Error,h,two\r\n"), kGoOn);
    EXPECT_THAT(problem.value_or(""), HasSubstr("http://127.0.0.1:1: "));
}

}  // namespace
}  // namespace quorbel
