#include "soak/OwnPlace.h"

#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>

namespace quorbel::soak {

std::string makeSmallDisk(const std::filesystem::path &folder, unsigned size) {
    const std::string options = "size=" + std::to_string(size) + "m";
    const bool isMade = ::unshare(CLONE_NEWNS) == 0 &&
                        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                        ::mount("quorbel-soak", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
    return isMade ? std::string() : std::strerror(errno);  // NOLINT(concurrency-mt-unsafe)
}

void makeHome(const testing::TemporaryFolder &own) {
    const std::filesystem::path home = own.path() / "home";
    std::filesystem::create_directory(home);
    std::filesystem::create_directory(own.path() / "files");
    std::filesystem::permissions(home, std::filesystem::perms::owner_all);
    for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                                 "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
        qputenv(variable, QByteArray::fromStdString(home.string()));
    }
}

QByteArray twoScreens(const testing::TemporaryFolder &own) {
    const auto screens = own.write(
        "screens.json", R"({"screens":[{"name":"large","x":0,"y":0,"width":1280,"height":900},)"
                        R"({"name":"small","x":1280,"y":0,"width":900,"height":620}]})");
    return QByteArray::fromStdString("offscreen:configfile=" + screens.string());
}

}  // namespace quorbel::soak
