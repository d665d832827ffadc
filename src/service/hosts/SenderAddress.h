#pragma once

#include <sys/socket.h>

#include <string>

namespace quorbel {

/// An IPv4 or IPv6 address as text, without the port; an IPv4 address that came through an IPv6
/// socket is shown as IPv4. Empty for any other family.
std::string addressText(const sockaddr_storage &address);

/// Remembers the text of the last address: senders come in bursts.
class SenderAddress {
public:
    /// Valid until the next call.
    const std::string &textOf(const sockaddr_storage &address);

private:
    sockaddr_storage m_last{};
    std::string m_text;
};

}  // namespace quorbel
