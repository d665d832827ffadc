#pragma once

#include "common/ServiceConfiguration.h"

#include <filesystem>

namespace quorbel {

/// The file with what an administrator wants of the service, and what of it is in force. Says in
/// the journal what it holds, and what is wrong with it. Not safe to use from several threads.
class ConfigurationFile {
public:
    /// Until it is loaded, the default is in force.
    explicit ConfigurationFile(std::filesystem::path file);

    /// Reads it (again). A mistake leaves what was in force. True when something else is in force
    /// now.
    bool load();

    [[nodiscard]] const ServiceConfiguration &current() const { return m_current; }

private:
    void sayProblems(const std::vector<ConfigurationProblem> &problems) const;

    const std::filesystem::path m_file;
    ServiceConfiguration m_current;
};

}  // namespace quorbel
