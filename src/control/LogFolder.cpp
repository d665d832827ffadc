#include "control/LogFolder.h"

#include "common/LogReader.h"
#include "control/Output.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

namespace quorbel {

namespace {

std::string messageOf(int error) {
    return std::generic_category().message(error);
}

}  // namespace

ExitCode complainOfFolder(int error) {
    const std::string folder = libraryFolder().string();
    if (error == EACCES || error == EPERM) {
        complain("You may not read " + folder +
                 ". Members of the groups quorbel and quorbel-readers may.");
        return ExitCode::kNotAllowed;
    }
    complain(folder + " cannot be read: " + messageOf(error));
    return error == ENOENT || error == ENOTDIR ? ExitCode::kNotThere : ExitCode::kNothing;
}

std::variant<std::vector<std::filesystem::path>, ExitCode> filesOfService() {
    std::error_code error;
    listFolder(libraryFolder(), error);
    if (error) {
        return complainOfFolder(error.value());
    }
    return logFiles();
}

UniqueFd LogOpener::open(const std::filesystem::path &file) {
    UniqueFd source = openRegular(file, O_RDONLY);
    if (!source.isOpen() && errno != ENOENT && !m_hasComplained) {
        complain(file.string() + " cannot be read: " + messageOf(errno));
        m_hasComplained = true;
    }
    return source;
}

}  // namespace quorbel
