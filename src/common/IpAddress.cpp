#include "common/IpAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <span>

namespace quorbel {

namespace {

constexpr std::array<std::uint8_t, 12> kV4Prefix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

}  // namespace

std::optional<IpAddress> IpAddress::parse(std::string_view text) {
    std::array<char, INET6_ADDRSTRLEN> terminated{};
    if (text.size() >= terminated.size() || text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    std::ranges::copy(text, terminated.begin());
    IpAddress address;
    if (::inet_pton(AF_INET, terminated.data(), address.m_bytes.data() + kV4Prefix.size()) == 1) {
        std::ranges::copy(kV4Prefix, address.m_bytes.begin());
        return address;
    }
    if (::inet_pton(AF_INET6, terminated.data(), address.m_bytes.data()) == 1) {
        return address;
    }
    return std::nullopt;
}

bool IpAddress::isV4() const {
    return std::ranges::equal(kV4Prefix, std::span(m_bytes).first<kV4Prefix.size()>());
}

bool IpAddress::sharesPrefix(const IpAddress &other, unsigned bits) const {
    const std::size_t whole = bits / 8;
    if (std::memcmp(m_bytes.data(), other.m_bytes.data(), whole) != 0) {
        return false;
    }
    const unsigned rest = bits % 8;
    return rest == 0 || (m_bytes[whole] ^ other.m_bytes[whole]) >> (8 - rest) == 0;
}

socklen_t IpAddress::toSocketAddress(sockaddr_storage &address) const {
    address = {};
    if (isV4()) {
        sockaddr_in v4{};
        v4.sin_family = AF_INET;
        std::memcpy(&v4.sin_addr, m_bytes.data() + kV4Prefix.size(), sizeof v4.sin_addr);
        std::memcpy(&address, &v4, sizeof v4);
        return sizeof v4;
    }
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    std::memcpy(&v6.sin6_addr, m_bytes.data(), m_bytes.size());
    std::memcpy(&address, &v6, sizeof v6);
    return sizeof v6;
}

std::size_t IpAddress::Hash::operator()(const IpAddress &address) const {
    std::array<std::uint64_t, 2> halves{};
    std::memcpy(halves.data(), address.m_bytes.data(), address.m_bytes.size());
    // Spreads addresses that differ in their last bits only.
    return (halves[0] * 31 + halves[1]) * 0x9E3779B97F4A7C15U >> 16U;
}

}  // namespace quorbel
