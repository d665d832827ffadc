#pragma once

#include "platform/UniqueFd.h"
#include "platform/Value.h"
#include "service/bus/SettingsFile.h"
#include "service/mail/MailSender.h"
#include "service/store/LogStore.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace quorbel {

/// What the front-end can ask the service to do. Replies are "OK", or one line that says what is
/// wrong. For one thread.
class Commands {
public:
    /// All must outlive the object.
    Commands(LogStore &store, SettingsFile &settings, MailSender &mail)
        : m_store(store), m_settings(settings), m_mail(mail) {}

    /// The part of a command that may take minutes; gives the reply. It can be run on any thread.
    using Rest = std::function<std::string()>;
    using Outcome = std::variant<std::string, Rest>;

    /// Asks for the settings to be read from their file anew; no client can.
    struct Reload {};

    /// Carries out a command, whatever is in it, but for such a part: returns the reply or the
    /// rest.
    Outcome begin(const Dictionary &command);
    Outcome begin(Reload reload);
    /// The same for a command that comes as a keyed archive in a sealed memfd.
    Outcome begin(const UniqueFd &commandFile);
    /// Carry out all of a command.
    std::string carryOut(const Dictionary &command) { return finish(begin(command)); }
    std::string carryOut(const UniqueFd &commandFile) { return finish(begin(commandFile)); }

    /// From any thread: ends what may take minutes, except for mail, within about a second, and
    /// every later one at once.
    void stop() { m_stop = true; }

private:
    static std::string finish(const Outcome &outcome);
    std::string save(const Dictionary &command);
    std::string update(const Dictionary &command);
    std::optional<std::string> updateInPlace(const UniqueFd &commandFile);
    std::optional<std::string> restoreInPlace(const UniqueFd &commandFile);
    std::string restore(const Dictionary &command);
    Rest email(const Dictionary &command);

    LogStore &m_store;
    SettingsFile &m_settings;
    MailSender &m_mail;
    std::atomic<bool> m_stop = false;
};

}  // namespace quorbel
