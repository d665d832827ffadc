#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace quorbel {

/// Which file stands under a name. A file that takes another one's place has another identity, also
/// where the system gives it the number of one that is gone; only where the file system does not
/// tell when a file came to be could that be missed.
struct FileMark {
    std::uint64_t inode = 0;
    std::uint64_t born = 0;  ///< nanoseconds since 1970; 0 where it is not told

    bool operator==(const FileMark &) const = default;
};

/// Nothing, with errno, where the file cannot be asked.
std::optional<FileMark> markOf(int fd);
std::optional<FileMark> markOf(const std::filesystem::path &file);

/// A place in one of a folder's files: behind its first `offset` bytes.
struct FilePlace {
    std::string name;  ///< empty: before the first file
    FileMark file;
    std::uint64_t offset = 0;

    bool operator==(const FilePlace &) const = default;
    [[nodiscard]] bool isInSameFile(const FilePlace &other) const {
        return name == other.name && file == other.file;
    }
};

}  // namespace quorbel
