#include "common/ConfigurationValues.h"

#include "common/LegibleText.h"
#include "platform/Number.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

constexpr std::size_t kLongestHost = 255;
constexpr std::size_t kLongestIdentifier = 64;
constexpr std::size_t kMostServers = 16;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isHost(std::string_view text) {
    return IpAddress::parse(text) || isWordOf(text, "-._", kLongestHost);
}

/// Whether a text is "host", "host:port" or "[address]:port".
bool isAuthority(std::string_view text) {
    std::size_t end = std::min(text.find(':'), text.size());
    bool isKnown = isWordOf(text.substr(0, end), "-._", kLongestHost);
    if (text.starts_with('[')) {
        end = std::min(text.find(']'), text.size() - 1);
        isKnown = IpAddress::parse(text.substr(1, end - 1)).has_value() && text[end] == ']';
        ++end;
    }
    std::uint16_t port = 0;
    const std::string_view rest = text.substr(end);
    return isKnown && (rest.empty() || (rest.starts_with(':') && !takePort(port, rest.substr(1))));
}

}  // namespace

std::string shownValue(std::string_view text) {
    constexpr std::size_t kMostShown = 80;
    return '"' + legible(text, kMostShown) + '"';
}

std::vector<std::string_view> listedIn(std::string_view list) {
    std::vector<std::string_view> parts;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::string_view part = trimmed(list.substr(0, comma));
        if (!part.empty()) {
            parts.push_back(part);
        }
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return parts;
}

bool isWordOf(std::string_view text, std::string_view others, std::size_t most) {
    return !text.empty() && text.size() <= most && std::ranges::all_of(text, [others](char c) {
        return isLetter(c) || isDigit(c) || others.find(c) != std::string_view::npos;
    });
}

Complaint takeCollector(std::string &collector, std::string_view value) {
    if (!isWordOf(value, "-._", kLongestCollectorName)) {
        return shownValue(value) + R"( is not 1 to 64 letters, digits, "-", "." or "_")";
    }
    collector = value;
    return std::nullopt;
}

Complaint takeHost(std::string &host, std::string_view value) {
    if (!isHost(value)) {
        return shownValue(value) + " is neither a host's name nor an address";
    }
    host = value;
    return std::nullopt;
}

Complaint takePort(std::uint16_t &port, std::string_view value) {
    const auto number = readNumber<std::uint16_t>(value);
    if (!number || *number == 0) {
        return shownValue(value) + " is not a number from 1 to 65535";
    }
    port = *number;
    return std::nullopt;
}

Complaint takeProtocol(ForwardSettings::Protocol &protocol, std::string_view value) {
    constexpr std::array<std::string_view, 3> kNames{"udp", "tcp", "tls"};
    const auto *const found = std::ranges::find(kNames, value);
    if (found == kNames.end()) {
        return shownValue(value) + " is none of udp, tcp and tls";
    }
    protocol = static_cast<ForwardSettings::Protocol>(found - kNames.begin());
    return std::nullopt;
}

Complaint takeFile(std::string &file, std::string_view value) {
    if (!value.starts_with('/')) {
        return shownValue(value) + " is not the whole path of a file: it begins with no slash";
    }
    file = value;
    return std::nullopt;
}

Complaint takeFlag(bool &flag, std::string_view value) {
    if (value != "yes" && value != "no") {
        return shownValue(value) + " is neither yes nor no";
    }
    flag = value == "yes";
    return std::nullopt;
}

Complaint takeIdentifier(std::string &identifier, std::string_view value) {
    if (!isWordOf(value, "_", kLongestIdentifier) || isDigit(value.front())) {
        return shownValue(value) +
               " is not 1 to 64 letters, digits or \"_\", of which no digit first";
    }
    identifier = value;
    return std::nullopt;
}

Complaint takeText(std::string &text, std::string_view value) {
    text = value;
    return std::nullopt;
}

Complaint takeNetworks(std::vector<AddressNetwork> &networks, std::string_view value) {
    for (const std::string_view part : listedIn(value)) {
        const auto network = AddressNetwork::parse(part);
        if (!network) {
            return shownValue(part) + " is neither a network, as 10.1.0.0/16, nor an address";
        }
        networks.push_back(*network);
    }
    return std::nullopt;
}

Complaint takeServers(std::vector<std::string> &servers, std::string_view value) {
    for (std::string_view part : listedIn(value)) {
        const std::string_view whole = part;
        const std::size_t scheme = part.starts_with("https://")  ? 8
                                   : part.starts_with("http://") ? 7
                                                                 : 0;
        part.remove_prefix(scheme);
        part.remove_suffix(part.ends_with('/') ? 1 : 0);
        if (scheme == 0 || part.empty() || !isAuthority(part)) {
            return shownValue(whole) + " is not of the form https://host:port";
        }
        servers.emplace_back(whole.substr(0, scheme + part.size()));
    }
    if (servers.empty() || servers.size() > kMostServers) {
        return "there are not 1 to " + std::to_string(kMostServers) + " of them";
    }
    return std::nullopt;
}

}  // namespace quorbel
