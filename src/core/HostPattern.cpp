#include "core/HostPattern.h"

#include "platform/Number.h"
#include "platform/Text.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace quorbel {

namespace {

/// The pattern as a regular expression of the whole name.
std::string expressionFor(std::string_view pattern) {
    std::string expression = "(?s)\\A";
    for (const char character : pattern) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '*') {
            expression += ".*";
        } else if (character == '?') {
            expression += '.';
        } else {
            if (code < 0x80U && std::isalnum(code) == 0) {
                expression += '\\';
            }
            expression += character;
        }
    }
    return expression + "\\z";
}

/// The number of leading ones of a mask as "255.255.0.0", counted from the start of an IPv4 address
/// within IPv6.
std::optional<unsigned> bitsOfMask(std::string_view text) {
    const auto mask = IpAddress::parse(text);
    const auto ones = IpAddress::parse("255.255.255.255");
    for (unsigned bits = IpAddress::kV4Begin; mask && bits <= IpAddress::kBits; ++bits) {
        const IpAddress network = ones->network(bits);
        if (network == *mask || (bits == IpAddress::kV4Begin && text == "0.0.0.0")) {
            return bits;
        }
    }
    return std::nullopt;
}

constexpr char kQuote = '"';

/// Of a name in quotation marks that begins the text and is all of a part; else 0.
std::size_t quotedLength(std::string_view text) {
    std::size_t end = text.starts_with(kQuote) ? text.find(kQuote, 1) : std::string_view::npos;
    while (end != std::string_view::npos && text.substr(end + 1).starts_with(kQuote)) {
        end = text.find(kQuote, end + 2);
    }
    if (end == std::string_view::npos) {
        return 0;
    }
    const std::string_view rest = trimmed(text.substr(end + 1));
    return rest.empty() || rest.starts_with(',') ? end + 1 : 0;
}

/// The name that a part has in quotation marks; nothing where it has none.
std::optional<std::string> unquoted(std::string_view part) {
    if (part.empty() || quotedLength(part) != part.size()) {
        return std::nullopt;
    }
    std::string name;
    for (std::size_t at = 1; at + 1 < part.size(); at += part[at] == kQuote ? 2U : 1U) {
        name += part[at];
    }
    return name;
}

/// Calls `visit(part, isExcluded)` for each part that names something.
template <typename Visit>
void visitParts(std::string_view pattern, Visit visit) {
    while (!pattern.empty()) {
        pattern = trimmed(pattern);
        const bool isExcluded = pattern.starts_with('!');
        if (isExcluded) {
            pattern = trimmed(pattern.substr(1));
        }
        const std::size_t comma =
            std::min(pattern.find(',', quotedLength(pattern)), pattern.size());
        const std::string_view part = trimmed(pattern.substr(0, comma));
        pattern.remove_prefix(std::min(comma + 1, pattern.size()));
        if (!part.empty()) {
            visit(part, isExcluded);
        }
    }
}

/// Whether what stands before a slash was meant to be an address.
bool isLikeNetwork(std::string_view part) {
    const std::size_t slash = part.find('/');
    const std::string_view address = part.substr(0, slash);
    return slash != std::string_view::npos && !address.empty() &&
           address.find_first_not_of("0123456789abcdefABCDEF.:") == std::string_view::npos &&
           address.find_first_of("0123456789:") != std::string_view::npos;
}

}  // namespace

HostPattern::Part::Part(std::string_view pattern)
    : m_host(unquoted(pattern)),
      m_network(networkOf(pattern)),
      m_name({expressionFor(pattern), /*isCaseSensitive=*/false, /*isExpression=*/true}) {}

std::optional<HostPattern::Network> HostPattern::Part::networkOf(std::string_view pattern) {
    const std::size_t slash = pattern.find('/');
    if (slash == std::string_view::npos) {
        const auto address = IpAddress::parse(pattern);
        return address ? std::optional(Network{*address, IpAddress::kBits}) : std::nullopt;
    }
    const auto address = IpAddress::parse(pattern.substr(0, slash));
    const std::string_view mask = pattern.substr(slash + 1);
    if (!address) {
        return std::nullopt;
    }
    const unsigned before = address->isV4() ? IpAddress::kV4Begin : 0;
    if (const auto bits = readNumber<unsigned>(mask); bits && *bits <= IpAddress::kBits - before) {
        return Network{*address, before + *bits};
    }
    const auto bits = address->isV4() ? bitsOfMask(mask) : std::nullopt;
    return bits ? std::optional(Network{*address, *bits}) : std::nullopt;
}

bool HostPattern::Part::matches(std::string_view host) const {
    if (m_host) {
        return host == *m_host;
    }
    if (!m_network) {
        return m_name.error().empty() && m_name.isIn(host);
    }
    const auto address = IpAddress::parse(host);
    return address && address->sharesPrefix(m_network->address, m_network->bits);
}

HostPattern::HostPattern(std::string_view pattern) {
    visitParts(pattern, [this](std::string_view part, bool isExcluded) {
        (isExcluded ? m_excluded : m_meant).emplace_back(part);
    });
}

std::vector<HostPattern::Meaning> HostPattern::meaningsOf(std::string_view pattern) {
    std::vector<Meaning> meanings;
    visitParts(pattern, [&meanings](std::string_view part, bool isExcluded) {
        meanings.push_back({isExcluded, unquoted(part), Part::networkOf(part), std::string(part)});
    });
    return meanings;
}

std::string HostPattern::quoted(std::string_view host) {
    std::string quoted(1, kQuote);
    for (const char character : host) {
        quoted.append(character == kQuote ? 2 : 1, character);
    }
    return quoted + kQuote;
}

std::string HostPattern::meaning(std::string_view host) {
    const bool isPlain = host.find_first_of("*?!,/\"") == std::string_view::npos && !host.empty() &&
                         trimmed(host) == host;
    return isPlain ? std::string(host) : quoted(host);
}

std::optional<std::string> HostPattern::wrongNetworkIn(std::string_view pattern) {
    std::optional<std::string> wrong;
    visitParts(pattern, [&wrong](std::string_view part, bool /*isExcluded*/) {
        if (!wrong && isLikeNetwork(part) && !Part::networkOf(part)) {
            wrong = part;
        }
    });
    return wrong;
}

bool HostPattern::matches(std::string_view host) const {
    const auto matchesIt = [host](const Part &part) { return part.matches(host); };
    return (m_meant.empty() || std::ranges::any_of(m_meant, matchesIt)) &&
           std::ranges::none_of(m_excluded, matchesIt);
}

}  // namespace quorbel
