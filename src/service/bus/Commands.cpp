#include "service/bus/Commands.h"

#include "common/SettingsDocument.h"
#include "platform/ArchivedCounts.h"
#include "platform/ArchivedLists.h"
#include "service/bus/CommandFile.h"
#include "service/message/FilterProblems.h"
#include "service/store/EventRemoval.h"
#include "service/store/EventRestoration.h"

#include <malloc.h>

#include <optional>
#include <utility>
#include <variant>

namespace quorbel {

namespace {

constexpr const char *kDone = "OK";

const Dictionary *dictionaryAt(const Dictionary &command, std::string_view key) {
    const Value *value = command.find(key);
    return value == nullptr ? nullptr : value->dictionary();
}

}  // namespace

std::string Commands::finish(const Outcome &outcome) {
    const auto *rest = std::get_if<Rest>(&outcome);
    return rest == nullptr ? std::get<std::string>(outcome) : (*rest)();
}

Commands::Outcome Commands::begin(const UniqueFd &commandFile) {
    const auto asValue = [&]() -> std::variant<Value, ArchiveError> {
        auto file = CommandFile::open(commandFile);
        if (auto *error = std::get_if<ArchiveError>(&file)) {
            return std::move(*error);
        }
        return readKeyedArchive(std::get<CommandFile>(file).bytes());
    };
    for (const auto inPlace : {&Commands::updateInPlace, &Commands::restoreInPlace}) {
        if (auto reply = (this->*inPlace)(commandFile)) {
            // A million small blocks would stay with the heap until the next such command.
            ::malloc_trim(0);
            return std::move(*reply);
        }
    }
    const auto command = asValue();
    if (const auto *error = std::get_if<ArchiveError>(&command)) {
        return "The command cannot be read: " + error->reason;
    }
    const Dictionary *dictionary = std::get<Value>(command).dictionary();
    return dictionary == nullptr ? "The command is not a dictionary" : begin(*dictionary);
}

/// Carries out an "update" without building a million values. Nothing, and nothing done, for any
/// other command and where the events are not named as the front-end does.
std::optional<std::string> Commands::updateInPlace(const UniqueFd &commandFile) {
    const auto file = CommandFile::open(commandFile);
    const auto *bytes = std::get_if<CommandFile>(&file);
    auto events =
        bytes != nullptr ? ArchivedCounts::open(bytes->bytes(), "update", "Events") : std::nullopt;
    EventRemoval removal(m_settings.dateFormats());
    if (!events || !removal.want(*events)) {
        return std::nullopt;
    }
    return removal.run(m_store, m_stop).value_or(kDone);
}

/// The same of a "restore".
std::optional<std::string> Commands::restoreInPlace(const UniqueFd &commandFile) {
    const auto file = CommandFile::open(commandFile);
    const auto *bytes = std::get_if<CommandFile>(&file);
    auto lists = bytes != nullptr
                     ? ArchivedLists::open(bytes->bytes(), "restore", {"Events", "Listed"})
                     : std::nullopt;
    auto restoration =
        lists ? EventRestoration::of(*lists, [bytes] { bytes->giveBack(); }) : std::nullopt;
    if (!restoration) {
        return std::nullopt;
    }
    return restoration->run(m_store, m_stop).value_or(kDone);
}

Commands::Outcome Commands::begin(const Dictionary &command) {
    const auto name = settingText(command, "command");
    if (!name) {
        return "The command has no name";
    }
    if (*name == "save") {
        return save(command);
    }
    if (*name == "update") {
        return update(command);
    }
    if (*name == "restore") {
        return restore(command);
    }
    if (*name == "email") {
        return email(command);
    }
    return "There is no such command";
}

Commands::Outcome Commands::begin(Reload /*reload*/) {
    m_settings.load();
    return kDone;
}

std::string Commands::save(const Dictionary &command) {
    const Dictionary *settings = dictionaryAt(command, "Settings");
    if (settings == nullptr) {
        return "The settings to save are not a dictionary";
    }
    if (const auto failure = m_settings.save(*settings)) {
        return *failure;
    }
    std::string reply;
    for (const std::string &problem : filterProblems(*settings)) {
        reply += (reply.empty() ? "The settings are stored. " : "; ") + problem;
    }
    return reply.empty() ? kDone : reply;
}

std::string Commands::update(const Dictionary &command) {
    const Dictionary *events = dictionaryAt(command, "Events");
    if (events == nullptr) {
        return "The events to remove are not a dictionary";
    }
    EventRemoval removal(m_settings.dateFormats());
    if (!removal.want(*events)) {
        return "The number of events to remove is not a number";
    }
    return removal.run(m_store, m_stop).value_or(kDone);
}

std::string Commands::restore(const Dictionary &command) {
    static const Value kNone = Array();
    const Value *events = command.find("Events");
    const Value *listed = command.find("Listed");
    listed = listed == nullptr ? &kNone : listed;
    if (events == nullptr || events->array() == nullptr || listed->array() == nullptr) {
        return "The events to put back are not an array";
    }
    EventRestoration restoration(*events->array(), *listed->array());
    return restoration.run(m_store, m_stop).value_or(kDone);
}

/// Through the server of the settings that are in force now.
Commands::Rest Commands::email(const Dictionary &command) {
    return [&mail = m_mail, settings = m_settings.current(),
            message = MailMessage{.recipients = settingTexts(command, "Recipients"),
                                  .subject = settingText(command, "Subject").value_or(""),
                                  .body = settingText(command, "Body").value_or(""),
                                  .html = settingFlag(command, "Html")}] {
        return mail.send(message, *settings);
    };
}

}  // namespace quorbel
