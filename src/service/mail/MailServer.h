#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// The outgoing mail server, as the settings name it.
struct MailServer {
    enum class Security {
        kNone,
        kNotChosen,  ///< as kNone, but nobody logs in: no password without encryption
        kStartTls,   ///< no mail without it
        kTls,        ///< from the first byte on
        kUnknown     ///< a text that is none of the choices: nothing is sent
    };
    /// The texts in the settings that choose kNone, kStartTls and kTls.
    static constexpr std::string_view kNoneText = "None";
    static constexpr std::string_view kStartTlsText = "STARTTLS";
    static constexpr std::string_view kTlsText = "SSL/TLS";

    static constexpr int kLongestTimeout = 60;

    std::string host;
    std::uint16_t port = 25;
    Security security = Security::kNotChosen;
    int timeoutMinutes = 1;  ///< for a whole mail; 1 to kLongestTimeout
    std::string sender;
    std::string user;  ///< empty: without logging in
    std::string password;
    std::string unknownSecurity;  ///< the text that is none of the choices

    bool operator==(const MailServer &) const = default;
};

/// Reads the settings' keys that begin with "actionsEmail". A port that is none counts as 25, a
/// timeout below 1 as 1.
MailServer mailServerFrom(const Dictionary &settings);

}  // namespace quorbel
