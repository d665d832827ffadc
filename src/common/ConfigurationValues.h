#pragma once

#include "common/AddressNetwork.h"
#include "common/ServiceConfiguration.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

// What the values of a configuration file may be.

inline constexpr std::size_t kLongestCollectorName = 64;

/// In quotation marks, legible and not too long, for the text of a problem.
std::string shownValue(std::string_view text);

/// What stands between the commas of a list, without blanks around it and without what is empty.
std::vector<std::string_view> listedIn(std::string_view list);

/// Whether a text is of ASCII letters, digits and `others`, and of 1 to `most` of them.
bool isWordOf(std::string_view text, std::string_view others, std::size_t most);

/// What is wrong with a value, in half a sentence; nothing when it was taken.
using Complaint = std::optional<std::string>;

// Each takes a value that is not empty, or complains and leaves what was there.
Complaint takeCollector(std::string &collector, std::string_view value);
Complaint takeHost(std::string &host, std::string_view value);
Complaint takePort(std::uint16_t &port, std::string_view value);
Complaint takeProtocol(ForwardSettings::Protocol &protocol, std::string_view value);
/// A whole path.
Complaint takeFile(std::string &file, std::string_view value);
/// "yes" or "no".
Complaint takeFlag(bool &flag, std::string_view value);
/// What stands in SQL without quotation marks.
Complaint takeIdentifier(std::string &identifier, std::string_view value);
Complaint takeText(std::string &text, std::string_view value);
Complaint takeNetworks(std::vector<AddressNetwork> &networks, std::string_view value);
/// Addresses of HTTP servers.
Complaint takeServers(std::vector<std::string> &servers, std::string_view value);

}  // namespace quorbel
