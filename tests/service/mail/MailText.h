#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quorbel::testing {

/// A mail as its reader sees it.
struct ReadMail {
    std::map<std::string, std::string> headers;  ///< unfolded, with encoded words decoded
    std::string body;                            ///< decoded
};

/// Reads a mail's text. Knows what the service may write, and no more.
ReadMail readMail(std::string_view text);

}  // namespace quorbel::testing
