#include "platform/Files.h"
#include "service/Journal.h"
#include "service/Service.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace quorbel;

constexpr std::uint16_t kDefaultPort = 514;

/// The port that the arguments ask for; nothing when they are wrong.
std::optional<std::uint16_t> readPort(const std::vector<std::string_view> &arguments) {
    if (arguments.empty()) {
        return kDefaultPort;
    }
    if (arguments.size() != 2 || arguments[0] != "--port") {
        return std::nullopt;
    }
    std::uint16_t port = 0;
    const std::string_view text = arguments[1];
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc() || rest != end) {
        return std::nullopt;
    }
    return port;
}

void prepareProcess() {
    // The loop takes these as events, so no thread may receive them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A write that fails says so.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    ::umask(0027);
    // Log files are rewritten with all that are concerned open.
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
}

int serve(std::uint16_t port) {
    auto sockets = openListenSockets(port);
    if (const auto *problem = std::get_if<std::string>(&sockets)) {
        say(JournalLevel::kError, *problem);
        return EXIT_FAILURE;
    }
    auto &opened = std::get<ListenSockets>(sockets);
    const std::uint16_t bound = opened.port;
    Service service(libraryFolder(), std::move(opened));
    say(JournalLevel::kInformation, "Listening on port " + std::to_string(bound));
    service.run();
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char **values) {
    const auto port = readPort({values + 1, values + count});
    if (!port) {
        say(JournalLevel::kError, "Usage: QuorbelSrv [--port NUMBER]");
        return EXIT_FAILURE;
    }
    prepareProcess();
    try {
        return serve(*port);
    } catch (const std::exception &problem) {
        say(JournalLevel::kError, problem.what());
        return EXIT_FAILURE;
    }
}
