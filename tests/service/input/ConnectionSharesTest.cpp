#include "service/input/ConnectionShares.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <list>
#include <optional>
#include <string>

namespace quorbel {
namespace {

using namespace std::chrono_literals;

/// What stands for the host of an address.
IpAddress hostOf(const std::string &address) {
    return ConnectionShares::hostOf(IpAddress::parse(address).value());
}

struct Member : ConnectionShares::Member {
    Member(ConnectionShares &owner, const std::string &address,
           ConnectionShares::Clock::time_point at)
        : shares(owner), place(shares.add(hostOf(address), *this, at)) {}
    ~Member() override { shares.remove(place); }
    void makeRoom() override {}

    ConnectionShares &shares;
    ConnectionShares::Place place;
};

struct ConnectionSharesTest : ::testing::Test {
    /// An established connection.
    Member &connect(const std::string &address) {
        Member &member = begin(address);
        shares.touch(member.place);
        return member;
    }
    Member &begin(const std::string &address) { return members.emplace_back(shares, address, now); }
    /// Closes the one that makes room for a new one of `address`, and tells which it was.
    /// Of anybody when there is no address.
    ConnectionShares::Member *toClose(const std::string &address) {
        return shares.toClose(address.empty() ? std::nullopt : std::optional(hostOf(address)), now);
    }

    ConnectionShares::Clock::time_point now = ConnectionShares::Clock::now();
    ConnectionShares shares;
    std::list<Member> members;
};

TEST_F(ConnectionSharesTest, NobodyMakesRoomWhereNobodyIs) {
    EXPECT_EQ(toClose("192.0.2.1"), nullptr);
    connect("192.0.2.1");
    members.clear();
    EXPECT_EQ(toClose("192.0.2.1"), nullptr);
}

TEST_F(ConnectionSharesTest, TheIdlestMakesRoomWhereAllHaveTheSame) {
    Member &first = connect("192.0.2.1");
    Member &second = connect("192.0.2.2");
    EXPECT_EQ(toClose("192.0.2.3"), &first);
    shares.touch(first.place);
    EXPECT_EQ(toClose("192.0.2.3"), &second);
    EXPECT_EQ(toClose(""), &second);
    // It would be the greediest with another one.
    EXPECT_EQ(toClose("192.0.2.1"), &first);
}

TEST_F(ConnectionSharesTest, TheGreediestMakesRoomWhoeverComes) {
    Member &quiet = connect("192.0.2.1");
    Member &greedy = connect("192.0.2.2");
    Member &greedyToo = connect("192.0.2.2");
    shares.touch(greedy.place);
    EXPECT_EQ(toClose("192.0.2.3"), &greedyToo);
    EXPECT_EQ(toClose("192.0.2.2"), &greedyToo);
    EXPECT_EQ(toClose("192.0.2.1"), &greedyToo);
    EXPECT_EQ(toClose(""), &greedyToo);
    connect("192.0.2.1");
    connect("192.0.2.1");
    EXPECT_EQ(toClose("192.0.2.2"), &quiet);
}

TEST_F(ConnectionSharesTest, OneThatGoesIsNotCountedAnyMore) {
    connect("192.0.2.1");
    connect("192.0.2.1");
    Member &other = connect("192.0.2.2");
    members.pop_front();
    members.pop_front();
    EXPECT_EQ(toClose("192.0.2.3"), &other);
    EXPECT_EQ(toClose("192.0.2.1"), &other);
}

TEST_F(ConnectionSharesTest, ANetworkOfIpv6IsOneHost) {
    Member &first = connect("2001:db8::1");
    connect("2001:db8::2");
    connect("2001:db8:0:1::1");
    connect("192.0.2.1");
    EXPECT_EQ(toClose("192.0.2.2"), &first);
    EXPECT_EQ(toClose("2001:db8::3"), &first);
    EXPECT_NE(hostOf("2001:db8::1"), hostOf("2001:db8:0:1::1"));
}

TEST_F(ConnectionSharesTest, SlowHandshakesMakeRoomFirst) {
    Member &idle = connect("192.0.2.1");
    Member &slow = begin("192.0.2.1");
    EXPECT_EQ(toClose("192.0.2.1"), &idle);
    now += ConnectionShares::kQuickHandshake + 1ms;
    begin("192.0.2.1");
    EXPECT_EQ(toClose("192.0.2.1"), &slow);
    shares.touch(slow.place);
    EXPECT_EQ(toClose("192.0.2.1"), &idle);
    Member &only = begin("192.0.2.9");
    for (int i = 0; i < 5; ++i) {
        begin("192.0.2.9");
    }
    EXPECT_EQ(toClose("192.0.2.1"), &only);
}

TEST_F(ConnectionSharesTest, LeavesDescriptorsToOthers) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const std::pair<rlim_t, int> cases[] = {{64, 48}, {1024, 768}, {16384, 12288}, {20000, 15904}};
    for (const auto &[granted, limit] : cases) {
        if (granted <= before.rlim_max) {
            const rlimit files{granted, before.rlim_max};
            ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
            EXPECT_EQ(ConnectionShares::descriptorLimit(), limit);
        }
    }
    setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
}  // namespace quorbel
