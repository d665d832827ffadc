#include "core/LibraryAccess.h"

#include "common/SettingsDocument.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace quorbel {

LibraryAccess libraryAccess() {
    if (faccessat(AT_FDCWD, libraryFolder().c_str(), R_OK | X_OK, AT_EACCESS) == 0) {
        return LibraryAccess::kOpen;
    }
    return errno == EACCES ? LibraryAccess::kClosed : LibraryAccess::kMissing;
}

bool hasSettingsDocument() {
    const auto path = libraryFolder() / kSettingsFileName;
    return faccessat(AT_FDCWD, path.c_str(), F_OK, AT_EACCESS) == 0 || errno != ENOENT;
}

}  // namespace quorbel
