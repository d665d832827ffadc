#include "service/bus/CommandFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

namespace quorbel {

std::variant<CommandFile, ArchiveError> CommandFile::open(const UniqueFd &file) {
    constexpr std::size_t kLargestFile = std::size_t{1} << 30U;
    constexpr int kNeededSeals = F_SEAL_WRITE | F_SEAL_SHRINK;
    const int seals = ::fcntl(file.get(), F_GET_SEALS);
    struct stat status {};
    if (seals < 0 || (seals & kNeededSeals) != kNeededSeals || ::fstat(file.get(), &status) != 0) {
        return ArchiveError{"The file is not sealed"};
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size == 0 || size > kLargestFile) {
        return ArchiveError{size == 0 ? "The file is empty" : "The file is too large"};
    }
    FileMapping mapping(file.get(), size);
    if (!mapping.isValid()) {
        return ArchiveError{"The file cannot be mapped"};
    }
    return CommandFile(std::move(mapping));
}

}  // namespace quorbel
