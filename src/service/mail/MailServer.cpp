#include "service/mail/MailServer.h"

#include "common/SettingsDocument.h"
#include "platform/Text.h"

#include <algorithm>

namespace quorbel {

namespace {

MailServer::Security securityNamed(std::string_view text) {
    using Security = MailServer::Security;
    if (text.empty()) {
        return Security::kNotChosen;
    }
    if (text == MailServer::kNoneText) {
        return Security::kNone;
    }
    if (text == MailServer::kStartTlsText) {
        return Security::kStartTls;
    }
    return text == MailServer::kTlsText ? Security::kTls : Security::kUnknown;
}

}  // namespace

MailServer mailServerFrom(const Dictionary &settings) {
    const auto text = [&settings](std::string_view key) {
        return settingText(settings, key).value_or("");
    };
    MailServer server;
    server.host = trimmed(text("actionsEmailServer"));
    const std::int64_t port = settingInteger(settings, "actionsEmailPort");
    if (port > 0 && port <= UINT16_MAX) {
        server.port = static_cast<std::uint16_t>(port);
    }
    const std::string security = text("actionsEmailSecurity");
    server.security = securityNamed(security);
    if (server.security == MailServer::Security::kUnknown) {
        server.unknownSecurity = security;
    }
    server.timeoutMinutes = static_cast<int>(std::clamp<std::int64_t>(
        settingInteger(settings, "actionsEmailTimeout"), 1, MailServer::kLongestTimeout));
    server.sender = text("actionsEmailSender");
    server.user = text("actionsEmailUsername");
    server.password = text("actionsEmailPassword");
    return server;
}

}  // namespace quorbel
