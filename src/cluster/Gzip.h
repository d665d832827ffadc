#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// The bytes in the gzip format (RFC 1952), packed at the least effort; nothing when there is no
/// memory for it.
std::optional<std::string> gzipped(std::string_view bytes);

}  // namespace quorbel
