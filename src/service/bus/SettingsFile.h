#pragma once

#include "platform/Mutex.h"
#include "platform/Value.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// The settings document on disk. The service is its only writer. Safe to use from any thread.
class SettingsFile {
public:
    /// `onChange` is called, on the thread that changed them, whenever other settings are in force.
    explicit SettingsFile(std::filesystem::path file, std::function<void()> onChange = {});

    /// Reads the document; empty settings are in force when there is none. A damaged one is left
    /// alone and said in the journal: the settings in force, at first empty ones, remain.
    void load();

    /// Stores the document in one step and puts it in force. A damaged file in its place is renamed
    /// first. Returns what went wrong, as one line; nothing has changed then.
    std::optional<std::string> save(const Dictionary &settings);

    /// The settings in force; never null.
    [[nodiscard]] std::shared_ptr<const Dictionary> current() const;
    /// The date format in force and those before it, up to eight, each once and the latest first:
    /// what the front-end shows may have gone through any of those since it started.
    [[nodiscard]] std::vector<std::string> dateFormats() const;

private:
    std::optional<std::string> setDamagedFileAside() REQUIRES(m_fileMutex);
    void putInForce(Dictionary settings) REQUIRES(m_fileMutex);

    const std::filesystem::path m_file;
    const std::function<void()> m_onChange;

    Mutex m_fileMutex LOCKED_BEFORE(m_mutex);  ///< held while the file is read or written
    mutable Mutex m_mutex;
    std::shared_ptr<const Dictionary> m_current GUARDED_BY(m_mutex);
    /// As dateFormats(); empty before the first settings.
    std::vector<std::string> m_dateFormats GUARDED_BY(m_mutex);
};

}  // namespace quorbel
