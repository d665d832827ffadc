#pragma once

#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string_view>

namespace quorbel::testing {

/// What this user's programs are configured by and remember, for as long as the object lives.
class ConfigurationFolder {
public:
    [[nodiscard]] const std::filesystem::path &path() const { return m_folder.path(); }
    void write(const std::filesystem::path &name, std::string_view content) const {
        m_folder.write(name, content);
    }

private:
    TemporaryFolder m_folder;
    ScopedVariable m_variable{"XDG_CONFIG_HOME", m_folder.path().string()};
};

}  // namespace quorbel::testing
