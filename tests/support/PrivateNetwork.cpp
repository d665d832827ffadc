#include "support/PrivateNetwork.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>

namespace quorbel::testing {

namespace {

bool isPrivate = false;

void write(const char *path, const std::string &text) {
    std::ofstream(path) << text;
}

}  // namespace

bool moveToAPrivateNetwork() {
    const std::string user = std::to_string(::getuid());
    const std::string group = std::to_string(::getgid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET | CLONE_NEWNS) != 0) {
        return false;
    }
    write("/proc/self/setgroups", "deny");
    write("/proc/self/uid_map", "0 " + user + " 1");
    write("/proc/self/gid_map", "0 " + group + " 1");
    ifreq loopback{.ifr_ifrn = {"lo"}, .ifr_ifru = {}};
    loopback.ifr_flags = IFF_UP;
    const int control = ::socket(AF_INET, SOCK_DGRAM, 0);
    const bool isUp = ::ioctl(control, SIOCSIFFLAGS, &loopback) == 0;
    ::close(control);
    isPrivate = ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return isUp;
}

bool replaceByMount(const std::filesystem::path &file, const std::filesystem::path &content) {
    return isPrivate && ::mount(content.c_str(), file.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

}  // namespace quorbel::testing
