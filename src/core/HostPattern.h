#pragma once

#include "common/IpAddress.h"
#include "core/TextPattern.h"

#include <optional>
#include <string_view>

namespace quorbel {

/// Which hosts are meant: a name or an address, in which "*" stands for any characters and "?" for
/// one; or an address with a mask ("10.0.0.0/8", "10.0.0.0/255.0.0.0", "fe80::/10"), which means
/// the addresses alone. Capital and small letters are alike.
class HostPattern {
public:
    explicit HostPattern(std::string_view pattern);

    [[nodiscard]] bool matches(std::string_view host) const;

private:
    struct Network {
        IpAddress address;
        unsigned bits;  ///< of 128
    };

    static std::optional<Network> networkOf(std::string_view pattern);

    std::optional<Network> m_network;
    TextPattern m_name;
};

}  // namespace quorbel
