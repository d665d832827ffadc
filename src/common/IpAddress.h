#pragma once

#include <sys/socket.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// An IPv4 or IPv6 address. An IPv4 address is kept in its form within IPv6 ("::ffff:10.0.0.1"), so
/// that the two ways of writing it are equal.
class IpAddress {
public:
    static constexpr unsigned kBits = 128;
    /// Where the 32 bits of an IPv4 address begin.
    static constexpr unsigned kV4Begin = 96;

    /// Nothing when the text is no address.
    static std::optional<IpAddress> parse(std::string_view text);
    /// The address of a socket, without its port; "::" for any other family.
    static IpAddress of(const sockaddr_storage &address);

    /// An IPv4 address as IPv4.
    [[nodiscard]] std::string text() const;

    [[nodiscard]] bool isV4() const;
    /// Whether the first `bits` of both are the same.
    [[nodiscard]] bool sharesPrefix(const IpAddress &other, unsigned bits) const;
    /// The first `bits`; zeros behind them.
    [[nodiscard]] IpAddress network(unsigned bits) const;
    /// For the socket functions, with port 0. Returns the length of what was written.
    socklen_t toSocketAddress(sockaddr_storage &address) const;

    /// For hash tables.
    struct Hash {
        std::size_t operator()(const IpAddress &address) const;
    };
    bool operator==(const IpAddress &) const = default;

private:
    std::array<std::uint8_t, 16> m_bytes{};
};

}  // namespace quorbel
