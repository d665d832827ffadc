#pragma once

#include "common/IpAddress.h"

#include <optional>
#include <string_view>

namespace quorbel {

/// The addresses that begin with the same bits: "10.1.0.0/16", "2001:db8::/32", or one address. An
/// IPv4 network holds addresses of IPv4 only, one of IPv6 none of these.
class AddressNetwork {
public:
    /// Nothing when the text is no address, or what follows its slash is not from 0 to the length
    /// of the address.
    static std::optional<AddressNetwork> parse(std::string_view text);

    [[nodiscard]] bool contains(const IpAddress &address) const {
        return address.isV4() == m_address.isV4() && m_address.sharesPrefix(address, m_bits);
    }
    bool operator==(const AddressNetwork &) const = default;

private:
    AddressNetwork(const IpAddress &address, unsigned bits) : m_address(address), m_bits(bits) {}

    IpAddress m_address;
    unsigned m_bits;  ///< of 128
};

}  // namespace quorbel
