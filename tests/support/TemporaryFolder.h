#pragma once

#include <filesystem>
#include <string_view>

namespace quorbel::testing {

/// A folder of its own below $TMPDIR or /tmp, removed with all its content at the end.
class TemporaryFolder {
public:
    TemporaryFolder();  ///< throws std::system_error when there can be none
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    [[nodiscard]] const std::filesystem::path &path() const { return m_path; }

    /// Writes a file below the folder, making the folders on the way, and returns its path. Throws
    /// std::runtime_error when that fails.
    // NOLINTNEXTLINE(modernize-use-nodiscard): most callers know the name
    std::filesystem::path write(const std::filesystem::path &name, std::string_view bytes) const;

private:
    std::filesystem::path m_path;
};

}  // namespace quorbel::testing
