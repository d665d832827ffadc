#include "Yardstick.h"

#include "platform/UniqueFd.h"
#include "support/WaitUntil.h"

#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace quorbel::bench {

namespace {

std::uint16_t freePort() {
    const UniqueFd probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(probe.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        ::getsockname(probe.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        std::fprintf(stderr, "No port is free\n");
        std::exit(2);
    }
    return ntohs(address.sin_port);
}

bool isListening(std::uint16_t port) {
    const UniqueFd probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(probe.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

}  // namespace

Yardstick::Yardstick(const std::filesystem::path &packages) : m_port(freePort()) {
    const std::string port = std::to_string(m_port);
    const auto configuration =
        m_folder.write("rsyslog.conf", "global(workDirectory=\"" + m_folder.path().string() +
                                           "\")\n"
                                           "module(load=\"imudp\")\nmodule(load=\"imtcp\")\n"
                                           "input(type=\"imudp\" port=\"" +
                                           port +
                                           "\" rcvbufSize=\"32m\")\n"
                                           "input(type=\"imtcp\" port=\"" +
                                           port + "\")\naction(type=\"omfile\" file=\"" +
                                           output().string() + "\")\n");
    const std::string libraries = (packages / "usr/lib/x86_64-linux-gnu").string();
    const std::string modules = libraries + "/rsyslog";
    const std::string program = (packages / "usr/sbin/rsyslogd").string();
    const std::string pidFile = (m_folder.path() / "pid").string();
    m_process = ::fork();
    if (m_process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::setenv("LD_LIBRARY_PATH", libraries.c_str(), 1);
        ::execl(program.c_str(), program.c_str(), "-n", "-f", configuration.c_str(), "-i",
                pidFile.c_str(), "-M", modules.c_str(), nullptr);
        ::_exit(127);
    }
    if (!testing::waitUntil([this] { return isListening(m_port); })) {
        std::fprintf(stderr, "%s does not start\n", program.c_str());
        std::exit(2);
    }
}

Yardstick::~Yardstick() {
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
}

}  // namespace quorbel::bench
