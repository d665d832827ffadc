#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <string_view>
#include <utility>

namespace quorbel {

/// A file's bytes in memory, for reading. Whoever maps a file that others may shorten risks SIGBUS.
class FileMapping {
public:
    FileMapping() = default;
    /// The file's first `size` bytes, of which it has as many. Not valid, with errno, when that
    /// fails. The descriptor is not needed any more then.
    FileMapping(int fd, std::size_t size)
        : m_address(::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0)), m_size(size) {}
    ~FileMapping() {
        if (isValid()) {
            ::munmap(m_address, m_size);
        }
    }
    FileMapping(FileMapping &&other) noexcept
        : m_address(std::exchange(other.m_address, MAP_FAILED)),
          m_size(std::exchange(other.m_size, 0)) {}
    FileMapping &operator=(FileMapping &&other) noexcept {
        std::swap(m_address, other.m_address);
        std::swap(m_size, other.m_size);
        return *this;
    }
    FileMapping(const FileMapping &) = delete;
    FileMapping &operator=(const FileMapping &) = delete;

    /// Gives up the memory that the bytes take here. What is looked at again is read again.
    void giveBack() const { ::madvise(m_address, m_size, MADV_DONTNEED); }
    [[nodiscard]] bool isValid() const { return m_address != MAP_FAILED; }
    [[nodiscard]] std::string_view bytes() const {
        return {static_cast<const char *>(m_address), m_size};
    }

private:
    void *m_address = MAP_FAILED;
    std::size_t m_size = 0;
};

}  // namespace quorbel
