#pragma once

#include "platform/Value.h"
#include "service/UniqueFd.h"
#include "service/bus/SettingsFile.h"
#include "service/store/LogStore.h"

#include <string>

namespace quorbel {

/// What the front-end can ask the service to do. For one thread.
class Commands {
public:
    /// Both must outlive the object.
    Commands(LogStore &store, SettingsFile &settings) : m_store(store), m_settings(settings) {}

    /// Carries out a command, whatever is in it, and returns the reply: "OK", or one line that says
    /// what is wrong.
    std::string carryOut(const Dictionary &command);
    /// The same for a command that comes as a keyed archive in a sealed memfd.
    std::string carryOut(const UniqueFd &commandFile);

private:
    std::string save(const Dictionary &command);
    std::string update(const Dictionary &command);

    LogStore &m_store;
    SettingsFile &m_settings;
};

}  // namespace quorbel
