#include "platform/UdpPorts.h"

#include "platform/Files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace quorbel {

namespace {

/// Addresses at which 127.0.0.1 arrives, as the tables of a little-endian machine have them.
constexpr std::array<std::string_view, 4> kAddresses{
    "00000000", "0100007F", "00000000000000000000000000000000", "0000000000000000FFFF00000100007F"};

/// "00000000:0202" of "  12: 00000000:0202 00000000:0000 07 ...".
std::string_view localEnd(std::string_view line) {
    const std::size_t number = line.find(": ");
    if (number == std::string_view::npos) {
        return {};
    }
    line.remove_prefix(number + 2);
    return line.substr(0, line.find(' '));
}

}  // namespace

bool isUdpPortServed(std::string_view table, std::uint16_t port) {
    std::array<char, 8> wanted{};
    std::snprintf(wanted.data(), wanted.size(), ":%04X", static_cast<unsigned>(port));
    while (!table.empty()) {
        const std::size_t end = std::min(table.find('\n'), table.size());
        const std::string_view local = localEnd(table.substr(0, end));
        table.remove_prefix(std::min(end + 1, table.size()));
        const std::size_t colon = local.find(':');
        if (colon != std::string_view::npos && local.substr(colon) == wanted.data() &&
            std::ranges::find(kAddresses, local.substr(0, colon)) != kAddresses.end()) {
            return true;
        }
    }
    return false;
}

bool isUdpPortServed(std::uint16_t port) {
    return std::ranges::any_of(std::array{"/proc/net/udp", "/proc/net/udp6"},
                               [port](const char *file) {
                                   const auto table = readFile(file);
                                   return table && isUdpPortServed(*table, port);
                               });
}

}  // namespace quorbel
