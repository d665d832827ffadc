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

IpAddress IpAddress::of(const sockaddr_storage &address) {
    IpAddress result;
    if (address.ss_family == AF_INET) {
        sockaddr_in v4{};
        std::memcpy(&v4, &address, sizeof v4);
        std::ranges::copy(kV4Prefix, result.m_bytes.begin());
        std::memcpy(result.m_bytes.data() + kV4Prefix.size(), &v4.sin_addr, sizeof v4.sin_addr);
    } else if (address.ss_family == AF_INET6) {
        sockaddr_in6 v6{};
        std::memcpy(&v6, &address, sizeof v6);
        std::memcpy(result.m_bytes.data(), &v6.sin6_addr, sizeof v6.sin6_addr);
    }
    return result;
}

std::string IpAddress::text() const {
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    const std::uint8_t *bytes = m_bytes.data() + (isV4() ? kV4Prefix.size() : 0);
    ::inet_ntop(isV4() ? AF_INET : AF_INET6, bytes, buffer.data(), buffer.size());
    return buffer.data();
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

IpAddress IpAddress::network(unsigned bits) const {
    IpAddress result;
    const std::size_t whole = bits / 8;
    std::copy_n(m_bytes.begin(), whole, result.m_bytes.begin());
    if (bits % 8 != 0) {
        result.m_bytes[whole] = static_cast<std::uint8_t>(m_bytes[whole] & 0xFF00U >> bits % 8);
    }
    return result;
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
