#include "actions/TestEmail.h"

#include "common/EmailTemplate.h"
#include "common/SettingsDocument.h"

namespace quorbel {

Dictionary testEmailCommand(const std::vector<std::string> &recipients,
                            const std::optional<Dictionary> &settings, std::string_view date) {
    const EventFields sample{.date = date,
                             .priority = "Local7.Debug",
                             .host = "127.0.0.1",
                             .message = "Quorbel - Test message",
                             .others = {}};
    Dictionary command{{"command", "email"},
                       {"Recipients", Array(recipients.begin(), recipients.end())}};
    const Dictionary stored = settings.value_or(Dictionary{});
    const auto subject = settingText(stored, kFormatSubjectKey);
    if (!subject) {
        return command;
    }
    command.set("Subject", fillTemplate(*subject, sample));
    const auto body = settingText(stored, kFormatBodyKey);
    if (!body) {
        return command;
    }
    command.set("Body", fillTemplate(*body, sample));
    command.set("Html", false);
    return command;
}

}  // namespace quorbel
