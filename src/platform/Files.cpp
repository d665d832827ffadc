#include "platform/Files.h"

#include "platform/DescriptorIo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace quorbel {

namespace {

bool writeAndRename(int fd, const std::string &temporary, const std::filesystem::path &file,
                    std::string_view bytes, unsigned mode) {
    return writeFully(fd, bytes) == bytes.size() && ::fchmod(fd, static_cast<mode_t>(mode)) == 0 &&
           ::fsync(fd) == 0 && ::rename(temporary.c_str(), file.c_str()) == 0;
}

}  // namespace

std::filesystem::path libraryFolder() {
    const char *folder = std::getenv("QUORBEL_LIBRARY");
    return folder != nullptr && *folder != '\0' ? folder : "/Library/Quorbel";
}

std::vector<std::string> listFolder(const std::filesystem::path &folder) {
    std::error_code error;
    return listFolder(folder, error);
}

std::vector<std::string> listFolder(const std::filesystem::path &folder, std::error_code &error) {
    std::vector<std::string> names;
    error.clear();
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    if (error) {
        return {};
    }
    std::ranges::sort(names);
    return names;
}

bool hasExtension(std::string_view name, std::string_view extension) {
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos && dot != 0 && !extension.empty() &&
           name.substr(dot + 1) == extension;
}

bool isThere(const std::filesystem::path &file) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(file, error));
}

std::optional<std::string> readFile(const std::filesystem::path &file) {
    const UniqueFd input = openRegular(file, O_RDONLY);
    return input.isOpen() ? readToEnd(input.get()) : std::nullopt;
}

bool replaceFile(const std::filesystem::path &file, std::string_view bytes, unsigned mode) {
    const std::filesystem::path parent = file.has_parent_path() ? file.parent_path() : ".";
    const UniqueFd folder(::open(parent.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
    if (!folder.isOpen()) {
        return false;
    }
    // A hidden name without the file's extension: whoever lists the folder does not take a left
    // over one for a log file.
    std::string temporary = (parent / ("." + file.filename().string() + ".XXXXXX")).string();
    const UniqueFd output(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!output.isOpen()) {
        return false;
    }
    if (!writeAndRename(output.get(), temporary, file, bytes, mode)) {
        const int reason = errno;
        ::unlink(temporary.c_str());
        errno = reason;
        return false;
    }
    // Whatever comes of this, the new file is the one that everybody reads from now on; where it
    // fails, a crash may bring the old one back.
    ::fsync(folder.get());
    return true;
}

}  // namespace quorbel
