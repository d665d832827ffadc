#pragma once

#include "platform/Value.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quorbel {

/// The settings document on disk. The service is its only writer.
class SettingsFile {
public:
    explicit SettingsFile(std::filesystem::path file) : m_file(std::move(file)) {}

    /// Reads the document; empty settings are in force when there is none. A damaged one is left
    /// alone and said in the journal.
    void load();

    /// Stores the document in one step and puts it in force. A damaged file in its place is renamed
    /// first. Returns what went wrong, as one line; nothing has changed then.
    std::optional<std::string> save(const Dictionary &settings);

    [[nodiscard]] const Dictionary &current() const { return m_current; }

private:
    std::optional<std::string> setDamagedFileAside();

    std::filesystem::path m_file;
    Dictionary m_current;
};

}  // namespace quorbel
