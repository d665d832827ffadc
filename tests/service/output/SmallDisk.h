#pragma once

#include <sys/mount.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace quorbel::testing {

/// A file system in memory, mounted at a folder, that is as large as it is told to be. For programs
/// with mounts of their own (PrivateNetwork.h).
class SmallDisk {
public:
    explicit SmallDisk(std::filesystem::path folder) : m_folder(std::move(folder)) {
        std::filesystem::create_directories(m_folder);
        m_isThere = ::mount("tmpfs", m_folder.c_str(), "tmpfs", 0, kRoomy) == 0;
    }
    ~SmallDisk() {
        if (m_isThere) {
            ::umount2(m_folder.c_str(), MNT_DETACH);
        }
    }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    /// Leaves about so many bytes of room. False when more is used meanwhile.
    [[nodiscard]] bool leave(std::uint64_t bytes) const {
        struct statvfs state {};
        ::statvfs(m_folder.c_str(), &state);
        const std::uint64_t used = (state.f_blocks - state.f_bfree) * state.f_bsize;
        return resize("size=" + std::to_string(used + bytes));
    }
    /// There is room again.
    [[nodiscard]] bool clear() const { return resize(kRoomy); }

private:
    static constexpr const char *kRoomy = "size=4g";

    [[nodiscard]] bool resize(const std::string &size) const {
        return ::mount("tmpfs", m_folder.c_str(), "tmpfs", MS_REMOUNT, size.c_str()) == 0;
    }

    const std::filesystem::path m_folder;
    bool m_isThere = false;
};

}  // namespace quorbel::testing
