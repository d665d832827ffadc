#include "platform/Files.h"
#include "platform/Number.h"
#include "service/Service.h"
#include "service/base/Journal.h"
#include "service/store/FolderLock.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace quorbel;

constexpr const char *kUsage = "Usage: QuorbelSrv [--port NUMBER] [--tls-port NUMBER]";
constexpr const char *kVersion = "QuorbelSrv " QUORBEL_VERSION;

/// What to print when the arguments ask for nothing else.
const char *answerTo(const std::vector<std::string_view> &arguments) {
    const std::string_view only = arguments.size() == 1 ? arguments.front() : "";
    return only == "--help" ? kUsage : only == "--version" ? kVersion : nullptr;
}

struct Ports {
    std::uint16_t plain = 514;
    std::uint16_t tls = TlsInput::kDefaultPort;
};

/// The ports that the arguments ask for, each at most once; nothing when they are wrong.
std::optional<Ports> readPorts(const std::vector<std::string_view> &arguments) {
    Ports ports;
    std::vector<std::uint16_t *> open{&ports.plain, &ports.tls};
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        std::uint16_t *wanted = arguments[i] == "--port"       ? &ports.plain
                                : arguments[i] == "--tls-port" ? &ports.tls
                                                               : nullptr;
        const auto number =
            i + 1 < arguments.size() ? readNumber<std::uint16_t>(arguments[i + 1]) : std::nullopt;
        if (!number || std::erase(open, wanted) == 0) {
            return std::nullopt;
        }
        *wanted = *number;
    }
    return ports;
}

void prepareProcess() {
    // The loop takes these as events, so no thread may receive them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A write that fails says so.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    ::umask(0027);
    // A core dump would hold the mail server's password. Commands of actions are other programs:
    // theirs are what the unit's limits make of them.
    ::prctl(PR_SET_DUMPABLE, 0);
    // Log files are rewritten with all that are concerned open.
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
}

int serve(Ports ports) {
    const FolderLock lock(libraryFolder());
    PassedSockets sockets = PassedSockets::take();
    const bool isHeld = sockets.plain.has_value();
    if (!isHeld) {
        auto opened = openListenSockets(ports.plain);
        if (const auto *problem = std::get_if<std::string>(&opened)) {
            say(JournalLevel::kError, *problem);
            return EXIT_FAILURE;
        }
        sockets.plain = std::move(std::get<ListenSockets>(opened));
    }
    const std::uint16_t bound = sockets.plain->port;
    Service service(libraryFolder(), std::move(sockets), isHeld, ports.tls);
    say(JournalLevel::kInformation, "Listening on port " + std::to_string(bound));
    return service.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char **values) {
    const std::vector<std::string_view> arguments(values + 1, values + count);
    if (const char *answer = answerTo(arguments)) {
        return std::puts(answer) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    const auto ports = readPorts(arguments);
    if (!ports) {
        say(JournalLevel::kError, kUsage);
        return EXIT_FAILURE;
    }
    prepareProcess();
    try {
        return serve(*ports);
    } catch (const std::exception &problem) {
        say(JournalLevel::kError, problem.what());
        return EXIT_FAILURE;
    }
}
