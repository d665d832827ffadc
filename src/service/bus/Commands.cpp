#include "service/bus/Commands.h"

#include "core/SettingsDocument.h"
#include "platform/DateFormat.h"
#include "service/bus/CommandFile.h"
#include "service/store/EventRemoval.h"

#include <optional>
#include <variant>

namespace quorbel {

namespace {

constexpr const char *kDone = "OK";

const Dictionary *dictionaryAt(const Dictionary &command, std::string_view key) {
    const Value *value = command.find(key);
    return value == nullptr ? nullptr : value->dictionary();
}

}  // namespace

std::string Commands::carryOut(const UniqueFd &commandFile) {
    const auto command = readCommandFile(commandFile);
    if (const auto *error = std::get_if<ArchiveError>(&command)) {
        return "The command cannot be read: " + error->reason;
    }
    const Dictionary *dictionary = std::get<Value>(command).dictionary();
    return dictionary == nullptr ? "The command is no dictionary" : carryOut(*dictionary);
}

std::string Commands::carryOut(const Dictionary &command) {
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
    if (*name == "email") {
        return "Sending e-mail is not available yet";
    }
    return "There is no such command";
}

std::string Commands::save(const Dictionary &command) {
    const Dictionary *settings = dictionaryAt(command, "Settings");
    if (settings == nullptr) {
        return "The settings to save are no dictionary";
    }
    return m_settings.save(*settings).value_or(kDone);
}

std::string Commands::update(const Dictionary &command) {
    const Dictionary *events = dictionaryAt(command, "Events");
    if (events == nullptr) {
        return "The events to remove are no dictionary";
    }
    const DateFormat format(settingText(m_settings.current(), "dateFormat").value_or(""));
    EventRemoval removal(format);
    if (!removal.want(*events)) {
        return "The number of events to remove is no number";
    }
    return removal.run(m_store).value_or(kDone);
}

}  // namespace quorbel
