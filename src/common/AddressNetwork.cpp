#include "common/AddressNetwork.h"

#include "platform/Number.h"

namespace quorbel {

std::optional<AddressNetwork> AddressNetwork::parse(std::string_view text) {
    const std::size_t slash = text.find('/');
    const auto address = IpAddress::parse(text.substr(0, slash));
    if (!address) {
        return std::nullopt;
    }
    if (slash == std::string_view::npos) {
        return AddressNetwork(*address, IpAddress::kBits);
    }
    const bool isWrittenAsV4 = text.find(':') == std::string_view::npos;
    const unsigned before = isWrittenAsV4 ? IpAddress::kV4Begin : 0;
    const auto bits = readNumber<unsigned>(text.substr(slash + 1));
    if (!bits || *bits > IpAddress::kBits - before) {
        return std::nullopt;
    }
    return AddressNetwork(*address, before + *bits);
}

}  // namespace quorbel
