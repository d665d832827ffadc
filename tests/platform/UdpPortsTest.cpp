#include "platform/UdpPorts.h"
#include "platform/UniqueFd.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace quorbel {
namespace {

constexpr std::string_view kHead =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout\n";

std::string row(std::string_view local) {
    return std::string(kHead) + "  512: " + std::string(local) +
           " 00000000:0000 07 00000000:00000000 00:00000000 00000000     0        0 91 2 0 0\n";
}

TEST(UdpPortsTest, KnowsWhereWhatIsSentToThisMachineArrives) {
    EXPECT_TRUE(isUdpPortServed(row("00000000:0202"), 514));
    EXPECT_TRUE(isUdpPortServed(row("0100007F:0202"), 514));
    EXPECT_TRUE(isUdpPortServed(row("00000000000000000000000000000000:0202"), 514));
    EXPECT_TRUE(isUdpPortServed(row("0000000000000000FFFF00000100007F:0202"), 514));
    EXPECT_FALSE(isUdpPortServed(row("0200007F:0202"), 514));
    EXPECT_FALSE(isUdpPortServed(row("00000000:158A"), 514));
    EXPECT_TRUE(isUdpPortServed(row("00000000:158A"), 5514));
    EXPECT_FALSE(isUdpPortServed(kHead, 514));
    EXPECT_FALSE(isUdpPortServed("", 514));
    EXPECT_FALSE(isUdpPortServed("512: 00000000", 514));
}

TEST(UdpPortsTest, FindsARealSocket) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    std::uint16_t port = 0;
    {
        const UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        auto *generic = reinterpret_cast<sockaddr *>(&address);
        ASSERT_EQ(bind(socket.get(), generic, size), 0);
        ASSERT_EQ(getsockname(socket.get(), generic, &size), 0);
        port = ntohs(address.sin_port);
        EXPECT_TRUE(isUdpPortServed(port));
    }
    EXPECT_FALSE(isUdpPortServed(port));
}

}  // namespace
}  // namespace quorbel
