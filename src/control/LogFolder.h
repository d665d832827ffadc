#pragma once

#include "control/ExitCode.h"
#include "platform/UniqueFd.h"

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace quorbel {

/// The log files in the service's folder, the oldest first; or how to end, when that folder cannot
/// be read, which was said then.
std::variant<std::vector<std::filesystem::path>, ExitCode> filesOfService();

/// What error number says of the service's folder, and how to end because of it.
ExitCode complainOfFolder(int error);

/// Opens log files, and says once for all of them which one cannot be read.
class LogOpener {
public:
    /// Not open when it cannot be. One that is gone meanwhile is no problem.
    UniqueFd open(const std::filesystem::path &file);
    /// Whether all of them could be read.
    [[nodiscard]] bool couldAll() const { return !m_hasComplained; }

private:
    bool m_hasComplained = false;
};

}  // namespace quorbel
