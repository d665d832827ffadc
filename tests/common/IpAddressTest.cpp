#include "common/IpAddress.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <string>

namespace quorbel {
namespace {

IpAddress address(const char *text) {
    return IpAddress::parse(text).value();
}

TEST(IpAddressTest, ReadsBothFamilies) {
    struct Case {
        std::string_view text;
        bool valid;
        bool v4;
    };
    const Case cases[] = {
        {"10.1.2.3", true, true},
        {"::ffff:10.1.2.3", true, true},
        {"::1", true, false},
        {"fe80::1", true, false},
        {"2001:db8:1111:2222:3333:4444:5555:6666", true, false},
        {"", false, false},
        {"10.1.2", false, false},
        {"10.1.2.256", false, false},
        {"010.1.2.3", false, false},
        {"host.example", false, false},
        {"1:2", false, false},
        {"fe80::1%eth0", false, false},
        {std::string_view("10.1.2.3\0x", 10), false, false},
        {"2001:db8:1111:2222:3333:4444:5555:6666:7777:8888:9999:0000", false, false},
    };
    for (const Case &c : cases) {
        const auto address = IpAddress::parse(c.text);
        EXPECT_EQ(address.has_value(), c.valid) << c.text;
        EXPECT_EQ(address && address->isV4(), c.v4) << c.text;
    }
    EXPECT_EQ(IpAddress::parse("::ffff:10.1.2.3"), IpAddress::parse("10.1.2.3"));
}

TEST(IpAddressTest, ComesFromASocketAndGoesToOne) {
    for (const char *text :
         {"10.1.2.3", "0.0.0.0", "255.255.255.255", "::", "::1", "2001:db8::1", "fe80::1:2:3:4"}) {
        sockaddr_storage socket{};
        address(text).toSocketAddress(socket);
        EXPECT_EQ(IpAddress::of(socket), address(text)) << text;
        EXPECT_EQ(IpAddress::of(socket).text(), text);
    }
    // As sockets for both families give it.
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(514);
    v6.sin6_addr.s6_addr[10] = v6.sin6_addr.s6_addr[11] = 0xFF;
    v6.sin6_addr.s6_addr[12] = 10;
    v6.sin6_addr.s6_addr[15] = 7;
    sockaddr_storage mapped{};
    std::memcpy(&mapped, &v6, sizeof v6);
    EXPECT_EQ(IpAddress::of(mapped), address("10.0.0.7"));
    EXPECT_EQ(IpAddress::of(mapped).text(), "10.0.0.7");

    sockaddr_storage other{};
    other.ss_family = AF_UNIX;
    EXPECT_EQ(IpAddress::of(other), address("::"));
}

TEST(IpAddressTest, HasNetworks) {
    EXPECT_EQ(address("2001:db8:1:2:3:4:5:6").network(64), address("2001:db8:1:2::"));
    EXPECT_EQ(address("2001:db8:1:2:3:4:5:6").network(31), address("2001:db8::"));
    EXPECT_EQ(address("2001:dbf::").network(29), address("2001:db8::"));
    EXPECT_EQ(address("2001:db8::1").network(128), address("2001:db8::1"));
    EXPECT_EQ(address("2001:db8::1").network(0), address("::"));
}

}  // namespace
}  // namespace quorbel
