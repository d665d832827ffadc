#include "control/Control.h"

#include "control/Commands.h"
#include "control/Output.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <string_view>

namespace quorbel {

namespace {

constexpr std::string_view kVersion = "quorbelctl " QUORBEL_VERSION "\n";
constexpr std::string_view kHelp = R"(Usage: quorbelctl COMMAND [OPTION...]

Commands:
  status [--json]                what the service counts, where it listens, whom it refused
  find [FILTER...] [TEXT...]     events that a filter means, the oldest first
  tail [-f] [-n N] [FILTER...]   the last ones (10), and with -f, --follow those that come
  stats [FILTER...] [TEXT...]    how many there are, by rating, severity, host and day
  test-message [-H HOST] [-p PORT] [-P udp|tcp]
                                 sends "Quorbel - Test message" (127.0.0.1, 514, udp)
  check-settings [FILE] [--config FILE]
                                 what is wrong in the settings, and in the configuration
  --help, --version

Filters, all of which have to hold, as on the events page:
  -c, --contains TEXT    some field contains it; as do TEXTs without an option
  -v, --lacks TEXT       no field contains it
  -e, --matches REGEX    some field has a match; --matches-not REGEX: none has
      ...-case           --contains-case and so on tell capital and small letters apart
      --rating NAME      Normal, Moderate, Severe, Unrated; several for any of them
      --severity NAME    that severity (Emergency to Debug, Unknown), and worse
      --class NAME       just that severity; may stand several times
      --facility NAME    Kern to Local7
      --host LIST        names, addresses, *, ?, 10.0.0.0/8, !except, with commas between
      --from MOMENT      2026-11-21, "2026-11-21 02:00", 2026-11-21T02:00:00Z, seconds
      --until MOMENT     the first moment that is not meant any more
      --time SPAN        "last hour", today, yesterday, "last 24 hours"
  -j, --json             an object of JSON for each event

"find" and "stats" in place of the log files:
      --cluster          the cluster of the service's configuration
      --cluster-name N   that one of several; --config FILE: another configuration

Ends with 0, 1 (nothing found, or wrong), 2 (usage), 3 (the service, or the cluster, is not there),
4 (not allowed). See quorbelctl(1).
)";

struct Command {
    std::string_view name;
    ExitCode (*run)(int count, char **values);
};

constexpr Command kCommands[] = {
    {"status", runStatus},
    {"tail", runTail},
    {"find", runFind},
    {"stats", runStats},
    {"test-message", runTestMessage},
    {"check-settings", runCheckSettings},
};

ExitCode print(std::string_view text) {
    Output output;
    output.text() = text;
    return finishOutput(output, ExitCode::kDone);
}

ExitCode refuse(const std::string &problem) {
    complain(problem + " Try \"quorbelctl --help\".");
    return ExitCode::kUsage;
}

ExitCode runCommand(int count, char **values) {
    const std::string_view what = values[1];
    char **const end = std::find(values + 1, values + count, std::string_view("--"));
    const bool wantsHelp = std::find(values + 1, end, std::string_view("--help")) != end;
    if (what == "--version" || what == "-V" || what == "--help" || what == "-h" || wantsHelp) {
        return print(what == "--version" || what == "-V" ? kVersion : kHelp);
    }
    const auto *command = std::ranges::find(kCommands, what, &Command::name);
    if (command == std::ranges::end(kCommands)) {
        return refuse("There is no command \"" + std::string(what) + "\".");
    }
    // What getopt_long(3) says about options begins with this.
    static char name[] = "quorbelctl";
    values[1] = name;
    return command->run(count - 1, values + 1);
}

}  // namespace

int runControl(int count, char **values) {
    // Who reads no further is no failure: writing says so.
    std::signal(SIGPIPE, SIG_IGN);
    return static_cast<int>(count < 2 ? refuse("A command is missing.")
                                      : runCommand(count, values));
}

}  // namespace quorbel
