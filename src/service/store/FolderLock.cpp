#include "service/store/FolderLock.h"

#include "service/base/Journal.h"
#include "service/store/LogFiles.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace quorbel {

FolderLock::FolderLock(const std::filesystem::path &folder) {
    makeLogFolder(folder);
    m_folder = UniqueFd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (m_folder.isOpen() && ::flock(m_folder.get(), LOCK_EX | LOCK_NB) == 0) {
        return;
    }
    if (errno == EWOULDBLOCK) {
        throw std::runtime_error("Another service is already using " + folder.string());
    }
    say(JournalLevel::kWarning, "The folder " + folder.string() +
                                    " cannot be locked: " + std::generic_category().message(errno));
}

}  // namespace quorbel
