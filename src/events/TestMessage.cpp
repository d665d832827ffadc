#include "events/TestMessage.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace quorbel {

void sendTestMessage(std::uint16_t port) {
    const int sender = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
    if (sender < 0) {
        return;
    }
    // One byte by agreement. Linux wants an int and refuses it, which makes no difference here.
    constexpr char kReuse = 1;
    ::setsockopt(sender, SOL_SOCKET, SO_REUSEADDR, &kReuse, sizeof kReuse);

    sockaddr_in receiver{};
    receiver.sin_family = AF_INET;
    receiver.sin_port = htons(port);
    receiver.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the socket interface's own way
    ::sendto(sender, kTestMessage.data(), kTestMessage.size(), 0,
             reinterpret_cast<sockaddr *>(&receiver), sizeof receiver);
    // Deliberately left open.
}

}  // namespace quorbel
