#include "SampleWeeks.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <random>
#include <vector>

namespace quorbel {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

struct SampleHost {
    const char *name;
    int gap;  ///< seconds between two messages on average, or to the second if `isRegular`
    bool isRegular;
    int silentHours;  ///< for how long it is silent where it is
};

constexpr SampleHost kHosts[] = {
    {"bk01", 300, true, 7},
    {"ap-reception.building-7.campus.example.org", 180, true, 6},
    {"cam-gate", 240, true, 75},
    {"ups-cellar", 6 * 3600, true, 60},
    {"10.0.0.12", 3600, true, 5},
    {"ap-hall-1", 240, false, 4},
    {"mx2.example.org", 110, false, 3},
    {"core-sw1", 160, false, 3},
    {"gw-west", 230, false, 3},
    {"fs01", 320, false, 3},
    {"10.0.0.31", 410, false, 3},
    {"web01", 500, false, 3},
    {"dc01", 540, false, 3},
    {"dc02", 570, false, 3},
    {"db01", 700, false, 3},
    {"printer-2og", 20'000, false, 3},
    {"fe80::21b:21ff:fe3c:9df8", 90'000, false, 3},
};

struct Line {
    std::int64_t moment;
    std::string text;
};

void addHost(std::vector<Line> &lines, const SampleHost &host, std::int64_t from,
             std::int64_t until, std::mt19937 &random) {
    std::exponential_distribution<> gap(1.0 / host.gap);
    const char *const priorities[] = {"Daemon.Informational", "Local7.Notice", "Mail.Informational",
                                      "Daemon.Debug", "Daemon.Warning"};
    for (double at = static_cast<double>(from) + gap(random); at < static_cast<double>(until);
         at += host.isRegular ? host.gap : gap(random)) {
        const auto moment = static_cast<std::int64_t>(at);
        const char *priority = random() % 300 == 0 ? "Kern.Critical" : priorities[random() % 5];
        lines.push_back({moment, std::to_string(moment) + ',' + priority + ',' + host.name +
                                     ",state is unchanged\r\n"});
    }
}

std::string joined(std::vector<Line> &lines) {
    std::ranges::stable_sort(lines, {}, &Line::moment);
    std::string text;
    for (const Line &line : lines) {
        text += line.text;
    }
    return text;
}

}  // namespace

std::string sampleWeeks(int silent) {
    const std::int64_t now = std::time(nullptr);
    std::mt19937 random{1};
    std::vector<Line> lines;
    for (int number = 0; const SampleHost &host : kHosts) {
        const std::int64_t until = number++ < silent ? now - host.silentHours * kHour : now;
        addHost(lines, host, now - 21 * kDay, until, random);
    }
    return joined(lines);
}

std::string sampleFirstDay() {
    const std::int64_t now = std::time(nullptr);
    std::mt19937 random{1};
    std::vector<Line> lines;
    for (const SampleHost &host : kHosts) {
        addHost(lines, host, now - kDay, now, random);
    }
    return joined(lines);
}

}  // namespace quorbel
