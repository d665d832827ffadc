#include "service/hosts/SenderAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>
#include <cstring>

namespace quorbel {

namespace {

/// The structure that an address of its family is.
template <typename T>
T as(const sockaddr_storage &address) {
    T typed{};
    std::memcpy(&typed, &address, sizeof typed);
    return typed;
}

std::string text(int family, const void *address) {
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    const char *result = inet_ntop(family, address, buffer.data(), buffer.size());
    return result == nullptr ? "" : result;
}

bool isSameHost(const sockaddr_storage &a, const sockaddr_storage &b) {
    if (a.ss_family != b.ss_family) {
        return false;
    }
    if (a.ss_family == AF_INET) {
        return as<sockaddr_in>(a).sin_addr.s_addr == as<sockaddr_in>(b).sin_addr.s_addr;
    }
    const in6_addr first = as<sockaddr_in6>(a).sin6_addr;
    const in6_addr second = as<sockaddr_in6>(b).sin6_addr;
    return std::memcmp(&first, &second, sizeof first) == 0;
}

}  // namespace

std::string addressText(const sockaddr_storage &address) {
    if (address.ss_family == AF_INET) {
        const in_addr ip = as<sockaddr_in>(address).sin_addr;
        return text(AF_INET, &ip);
    }
    if (address.ss_family != AF_INET6) {
        return {};
    }
    const in6_addr ip = as<sockaddr_in6>(address).sin6_addr;
    if (std::memcmp(&ip, "\0\0\0\0\0\0\0\0\0\0\xFF\xFF", 12) == 0) {
        return text(AF_INET, ip.s6_addr + 12);
    }
    return text(AF_INET6, &ip);
}

const std::string &SenderAddress::textOf(const sockaddr_storage &address) {
    if (!isSameHost(address, m_last)) {
        m_last = address;
        m_text = addressText(address);
    }
    return m_text;
}

}  // namespace quorbel
