#include "service/bus/CommandFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstddef>
#include <string_view>

namespace quorbel {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 30U;

/// A file's bytes in memory, for reading.
class Mapping {
public:
    Mapping(int fd, std::size_t size)
        : m_address(::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0)), m_size(size) {}
    ~Mapping() {
        if (isValid()) {
            ::munmap(m_address, m_size);
        }
    }
    Mapping(const Mapping &) = delete;
    Mapping &operator=(const Mapping &) = delete;

    [[nodiscard]] bool isValid() const { return m_address != MAP_FAILED; }
    [[nodiscard]] std::string_view bytes() const {
        return {static_cast<const char *>(m_address), m_size};
    }

private:
    void *m_address;
    std::size_t m_size;
};

}  // namespace

std::variant<Value, ArchiveError> readCommandFile(const UniqueFd &file) {
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
    const Mapping mapping(file.get(), size);
    if (!mapping.isValid()) {
        return ArchiveError{"The file cannot be mapped"};
    }
    return readKeyedArchive(mapping.bytes());
}

}  // namespace quorbel
