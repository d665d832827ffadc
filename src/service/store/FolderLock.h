#pragma once

#include "platform/UniqueFd.h"

#include <filesystem>

namespace quorbel {

/// Says that a service works in a folder, for as long as the object lives. The kernel forgets it
/// with the process, however that ends.
class FolderLock {
public:
    /// Makes the folder if need be. Throws std::runtime_error, with a line for the journal, when
    /// another service works in it. A folder that cannot be locked is left without.
    explicit FolderLock(const std::filesystem::path &folder);

private:
    UniqueFd m_folder;
};

}  // namespace quorbel
