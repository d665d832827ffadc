#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quorbel {

/// The folder that the service owns: "/Library/Quorbel", or the folder that the environment
/// variable QUORBEL_LIBRARY names (for tests and unprivileged runs).
std::filesystem::path libraryFolder();

/// The names of a folder's entries, in ascending byte order, so that files named by date are read
/// oldest first. Empty when the folder cannot be listed.
std::vector<std::string> listFolder(const std::filesystem::path &folder);
/// The same; `error` says why it cannot be listed.
std::vector<std::string> listFolder(const std::filesystem::path &folder, std::error_code &error);

/// Whether a name's extension is exactly `extension` (case-sensitive, without the dot). A name that
/// only begins with a dot has none.
bool hasExtension(std::string_view name, std::string_view extension);

/// Whether there is anything of this name, a link that leads nowhere included.
bool isThere(const std::filesystem::path &file);

/// A whole file's bytes; nothing when it is no regular file, or cannot be opened or read to its
/// end.
std::optional<std::string> readFile(const std::filesystem::path &file);

/// Replaces a file in one step: after a crash it holds the old bytes or the new ones, synced to
/// disk, never a mixture. Returns false, leaving the old file alone, when that fails (errno says
/// why); true once the new file stands, even if its folder cannot be synced and a crash may thus
/// bring the old one back. `mode` is the new file's permission bits.
bool replaceFile(const std::filesystem::path &file, std::string_view bytes, unsigned mode);

}  // namespace quorbel
