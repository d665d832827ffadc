#pragma once

#include "common/IpAddress.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace quorbel {

/// The hosts that "IP" and "Mask" of a filter record stand for: those with the same first so many
/// bits of their address.
///
/// A mask of 0 or less, also one that is no number, stands for any host, whatever the address. A
/// mask above the address's length counts as that length. A text that is no address (with another
/// mask) stands for nobody, and so does a host's name. An IPv4 address stands for hosts over IPv4
/// only, an IPv6 address for those over IPv6.
class SenderRange {
public:
    SenderRange(std::string_view address, std::int64_t mask);
    /// Of a filter record; what it lacks, or holds in another form, counts as empty.
    explicit SenderRange(const Dictionary &record);

    /// A record's mask: a text, as the editors store it, or a number.
    static std::int64_t maskOf(const Dictionary &record);

    [[nodiscard]] bool contains(const IpAddress &sender) const;

    [[nodiscard]] bool isAnybody() const { return m_mask <= 0; }
    [[nodiscard]] bool isNobody() const { return !isAnybody() && !m_address; }
    /// Whether it is anybody although another text than "0.0.0.0" and "::" stands beside the mask.
    [[nodiscard]] bool ignoresAddress() const;
    /// Whether there are fewer bits in the address than the mask has.
    [[nodiscard]] bool isMaskTooLong() const;
    /// The length of the address, in bits: 32 or 128. Precondition: neither anybody nor nobody.
    [[nodiscard]] unsigned addressBits() const { return IpAddress::kBits - m_addressBegin; }
    /// How many bits of the address may be any: it is 2 to the power of this many addresses.
    /// Precondition: neither anybody nor nobody.
    [[nodiscard]] unsigned freeBits() const;

private:
    bool m_isBlank;
    std::optional<IpAddress> m_address;
    std::int64_t m_mask;
    // In the 128 bits in which addresses of both kinds are held.
    unsigned m_addressBegin;
    unsigned m_sharedBits;
};

}  // namespace quorbel
