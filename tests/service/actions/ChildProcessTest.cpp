#include "service/actions/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>

namespace quorbel {
namespace {

/// Gives the calling thread a right that the programs it starts keep, as the unit gives the service
/// CAP_NET_BIND_SERVICE. False when the tests do not run with that right.
bool raiseAmbientCapability() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    if (syscall(SYS_capget, &header, sets.data()) != 0) {
        return false;
    }
    sets[0].inheritable |= 1U << CAP_NET_BIND_SERVICE;
    return syscall(SYS_capset, &header, sets.data()) == 0 &&
           prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, CAP_NET_BIND_SERVICE, 0, 0) == 0;
}

std::string outputOf(const ChildProcess &child) {
    std::string text;
    std::array<char, 4096> buffer{};
    while (true) {
        pollfd waited{child.output.get(), POLLIN, 0};
        poll(&waited, 1, -1);
        const ssize_t count = read(child.output.get(), buffer.data(), buffer.size());
        if (count <= 0) {
            return text;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

TEST(ChildProcessTest, KeepsNoneOfTheServicesCapabilities) {
    bool isRaised = false;
    std::string kept;
    // Capabilities are a thread's own: the other tests do not get this one.
    std::thread([&] {
        isRaised = raiseAmbientCapability();
        if (!isRaised) {
            return;
        }
        const auto child =
            ChildProcess::start("grep", {"CapAmb:", "/proc/self/status"}, {"PATH=/usr/bin:/bin"});
        if (child) {
            kept = outputOf(*child);
            EXPECT_EQ(child->wait(), 0);
        }
    }).join();
    if (!isRaised) {
        GTEST_SKIP() << "The right to use ports below 1024 is needed to have it taken away";
    }
    EXPECT_EQ(kept, "CapAmb:\t0000000000000000\n");
}

}  // namespace
}  // namespace quorbel
