#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace quorbel::testing {

TemporaryFolder::TemporaryFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "quorbel-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    m_path = path;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::filesystem::path TemporaryFolder::write(const std::filesystem::path &name,
                                             std::string_view bytes) const {
    std::filesystem::path target = m_path / name;
    std::filesystem::create_directories(target.parent_path());
    std::ofstream stream(target, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + target.string());
    }
    return target;
}

}  // namespace quorbel::testing
