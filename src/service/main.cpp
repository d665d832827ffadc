#include "cluster/PrintedSchema.h"
#include "common/ServiceConfiguration.h"
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
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace quorbel;

constexpr const char *kUsage =
    "Usage: QuorbelSrv [--port NUMBER] [--tls-port NUMBER] [--config PATH], or "
    "QuorbelSrv --cluster-schema [CLUSTER] [--config PATH]";
constexpr const char *kVersion = "QuorbelSrv " QUORBEL_VERSION;

/// What to print when the arguments ask for nothing else.
const char *answerTo(const std::vector<std::string_view> &arguments) {
    const std::string_view only = arguments.size() == 1 ? arguments.front() : "";
    return only == "--help" ? kUsage : only == "--version" ? kVersion : nullptr;
}

struct Options {
    std::uint16_t port = 514;
    std::uint16_t tlsPort = TlsInput::kDefaultPort;
    std::string configuration = kServiceConfigurationFile;
};

bool takeNumber(std::string_view text, std::uint16_t &number) {
    const auto read = readNumber<std::uint16_t>(text);
    number = read.value_or(number);
    return read.has_value();
}

/// False when there is no such option, or it does not take this value.
bool takeOption(std::string_view name, std::string_view value, Options &options) {
    if (name == "--config") {
        options.configuration = value;
        return !value.empty();
    }
    return name == "--port"       ? takeNumber(value, options.port)
           : name == "--tls-port" ? takeNumber(value, options.tlsPort)
                                  : false;
}

/// What the arguments ask for, each at most once; nothing when they are wrong.
std::optional<Options> readOptions(const std::vector<std::string_view> &arguments) {
    Options options;
    std::set<std::string_view> names;
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        if (!names.insert(arguments[i]).second || i + 1 == arguments.size() ||
            !takeOption(arguments[i], arguments[i + 1], options)) {
            return std::nullopt;
        }
    }
    return options;
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

int serve(const Options &options) {
    const FolderLock lock(libraryFolder());
    PassedSockets sockets = PassedSockets::take();
    const bool isHeld = sockets.plain.has_value();
    if (!isHeld) {
        auto opened = openListenSockets(options.port);
        if (const auto *problem = std::get_if<std::string>(&opened)) {
            say(JournalLevel::kError, *problem);
            return EXIT_FAILURE;
        }
        sockets.plain = std::move(std::get<ListenSockets>(opened));
    }
    const std::uint16_t bound = sockets.plain->port;
    Service service(libraryFolder(), options.configuration, std::move(sockets), isHeld,
                    options.tlsPort);
    say(JournalLevel::kInformation, "Listening on port " + std::to_string(bound));
    return service.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char **values) {
    const std::vector<std::string_view> arguments(values + 1, values + count);
    if (const char *answer = answerTo(arguments)) {
        return std::puts(answer) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    if (const auto status = printClusterSchema(arguments)) {
        return *status;
    }
    const auto options = readOptions(arguments);
    if (!options) {
        say(JournalLevel::kError, kUsage);
        return EXIT_FAILURE;
    }
    prepareProcess();
    try {
        return serve(*options);
    } catch (const std::exception &problem) {
        say(JournalLevel::kError, problem.what());
        return EXIT_FAILURE;
    }
}
