#pragma once

#include <filesystem>
#include <string>

namespace quorbel::testing {

/// Moves this process to a network of its own, in which every port is free and no message leaves
/// the machine, with mounts of its own. False where the system does not let it. Before there is any
/// other thread.
bool moveToAPrivateNetwork();

/// Lets a file have another content for the processes that went to the private network. False when
/// there is no such file, or the process did not go there.
bool replaceByMount(const std::filesystem::path &file, const std::filesystem::path &content);

}  // namespace quorbel::testing
