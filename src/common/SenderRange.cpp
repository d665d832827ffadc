#include "common/SenderRange.h"

#include "common/SettingsDocument.h"
#include "platform/Text.h"

#include <algorithm>

namespace quorbel {

SenderRange::SenderRange(std::string_view address, std::int64_t mask)
    : m_isBlank(trimmed(address).empty()),
      m_address(IpAddress::parse(trimmed(address))),
      m_mask(mask),
      m_addressBegin(address.find(':') == std::string_view::npos ? IpAddress::kV4Begin : 0),
      m_sharedBits(m_addressBegin +
                   static_cast<unsigned>(std::clamp<std::int64_t>(mask, 0, addressBits()))) {}

SenderRange::SenderRange(const Dictionary &record)
    : SenderRange(settingText(record, "IP").value_or(""), maskOf(record)) {}

std::int64_t SenderRange::maskOf(const Dictionary &record) {
    const auto text = settingText(record, "Mask");
    return text ? integerValue(*text) : settingInteger(record, "Mask");
}

bool SenderRange::contains(const IpAddress &sender) const {
    if (isAnybody()) {
        return true;
    }
    return m_address && m_address->isV4() == sender.isV4() &&
           m_address->sharesPrefix(sender, m_sharedBits);
}

bool SenderRange::ignoresAddress() const {
    return isAnybody() && !m_isBlank &&
           (!m_address ||
            (m_address != IpAddress::parse("0.0.0.0") && m_address != IpAddress::parse("::")));
}

bool SenderRange::isMaskTooLong() const {
    return m_address && m_mask > addressBits();
}

unsigned SenderRange::freeBits() const {
    // What an IPv4 address begins with when it is written as one of IPv6 is no other's.
    const unsigned least = m_address && m_address->isV4() ? IpAddress::kV4Begin : 0;
    return IpAddress::kBits - std::max(m_sharedBits, least);
}

}  // namespace quorbel
