// quorbel-load: sends numbered syslog messages to a port of this machine, or counts them in the log
// files. See kUsage.

#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "platform/Number.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace quorbel;
using load::Plan;

constexpr const char *kUsage =
    "Usage: quorbel-load send --port N [OPTION...]    over UDP, or with --tcp\n"
    "       quorbel-load print [OPTION...]            as a stream, to the standard output\n"
    "       quorbel-load check --folder F [OPTION...] ends with 0 when F holds all of them, once\n"
    "Options: --count N (1000)  --rate N (a second; as fast as possible)  --length N (100)\n"
    "         --run N (1)  --first N (0)  --priority N (134)  --connections N (1)  --counted\n"
    "         --queue BYTES (UDP: never let more wait)  --missing N (check: so many may be)\n";

struct Request {
    Plan plan;
    std::string folder;
    std::uint64_t missing = 0;
};

template <typename Number>
std::function<bool(std::string_view)> intoNumber(Number &target) {
    return [&target](std::string_view text) {
        const auto number = readNumber<Number>(text);
        target = number.value_or(target);
        return number.has_value();
    };
}

bool readOptions(const std::vector<std::string_view> &arguments, Request &request) {
    Plan &plan = request.plan;
    plan.count = 1000;
    const std::map<std::string_view, std::function<void()>> flags{
        {"--tcp", [&] { plan.transport = Plan::Transport::kTcp; }},
        {"--counted", [&] { plan.counted = true; }},
    };
    const std::map<std::string_view, std::function<bool(std::string_view)>> values{
        {"--port", intoNumber(plan.port)},
        {"--count", intoNumber(plan.count)},
        {"--rate", intoNumber(plan.perSecond)},
        {"--length", intoNumber(plan.length)},
        {"--run", intoNumber(plan.run)},
        {"--first", intoNumber(plan.first)},
        {"--priority", intoNumber(plan.priorities[0])},
        {"--connections", intoNumber(plan.connections)},
        {"--queue", intoNumber(plan.mostQueued)},
        {"--missing", intoNumber(request.missing)},
        {"--folder",
         [&](std::string_view text) {
             request.folder = text;
             return true;
         }},
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (const auto flag = flags.find(arguments[i]); flag != flags.end()) {
            flag->second();
            continue;
        }
        const auto value = values.find(arguments[i]);
        if (value == values.end() || ++i == arguments.size() || !value->second(arguments[i])) {
            return false;
        }
    }
    return plan.connections > 0;
}

int sendPlan(const Plan &plan) {
    const load::Sent sent = load::send(plan);
    std::printf("sent %lu in %.3f s\n", sent.count, sent.seconds);
    return sent.count == plan.count ? EXIT_SUCCESS : EXIT_FAILURE;
}

int printPlan(const Plan &plan) {
    for (std::uint64_t number = plan.first; number < plan.first + plan.count; ++number) {
        const std::string frame = load::streamFrame(plan, number);
        if (std::fwrite(frame.data(), 1, frame.size(), stdout) != frame.size()) {
            return EXIT_FAILURE;
        }
    }
    return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int checkFolder(const Request &request) {
    const load::Tally tally = load::tally(request.folder, request.plan);
    std::printf("%s\n", load::describe(tally).c_str());
    return tally.isClean() && tally.stored + request.missing >= request.plan.count ? EXIT_SUCCESS
                                                                                   : EXIT_FAILURE;
}

int run(const std::vector<std::string_view> &arguments) {
    const std::string_view what = arguments.empty() ? "" : arguments[0];
    Request request;
    if (!arguments.empty() && readOptions({arguments.begin() + 1, arguments.end()}, request)) {
        if (what == "send" && request.plan.port != 0) {
            return sendPlan(request.plan);
        }
        if (what == "print") {
            return printPlan(request.plan);
        }
        if (what == "check" && !request.folder.empty()) {
            return checkFolder(request);
        }
    }
    std::fputs(kUsage, stderr);
    return 2;
}

}  // namespace

int main(int count, char **values) {
    try {
        return run({values + 1, values + count});
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return EXIT_FAILURE;
    }
}
