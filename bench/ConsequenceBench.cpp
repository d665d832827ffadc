// What it costs to say, before a filter or shorter times are saved, what they would mean for the
// listed events.

#include "Measure.h"
#include "SampleList.h"
#include "SampleLog.h"
#include "core/EventCounter.h"
#include "core/FilterCount.h"
#include "core/RemovalCount.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>

namespace quorbel::bench {
namespace {

constexpr std::array<std::uint64_t, 4> kLines = {100'000, 500'000, 1'000'000, 2'000'000};
constexpr double kSpacing = 0.04;
constexpr double kSlice = 0.004;
constexpr int kRounds = 3;

struct Turns {
    double all = 0;
    double longest = 0;
};

/// Runs slice by slice to the end.
template <typename Counter>
Turns runAll(Counter &counter, const std::function<bool()> &isBusy) {
    Turns turns;
    while (isBusy()) {
        const ProcessorWatch watch;
        counter.run([&watch] { return watch.seconds() >= kSlice; });
        turns.all += watch.seconds();
        turns.longest = std::max(turns.longest, watch.seconds());
    }
    return turns;
}

/// The round of the least time.
template <typename Round>
Turns bestOf(Round round) {
    Turns best{1e9, 1e9};
    for (int i = 0; i < kRounds; ++i) {
        const Turns turns = round();
        best = turns.all < best.all ? turns : best;
    }
    return best;
}

Turns counting(EventList &list, const char *message) {
    FilterCount count(list);
    return bestOf([&] {
        count.start({{"IP", "10.0.0.0"}, {"Mask", "8"}, {"Message", message}}, 0);
        return runAll(count, [&count] { return count.isRunning(); });
    });
}

Turns removing(EventList &list) {
    RemovalCount count(list);
    return bestOf([&] {
        RetentionRules::Limits limits;
        limits.fill(1'750'000'000);
        count.start(limits, {});
        return runAll(count, [&count] { return count.isRunning(); });
    });
}

/// What the events page needs for counting one text.
Turns finding(EventList &list) {
    EventCounter counter(list);
    EventQuery query;
    query.texts.push_back({{"interface", false, false}, false});
    return bestOf([&] {
        counter.start({query});
        return runAll(counter, [&counter] { return counter.isCounting(); });
    });
}

bool measure(const std::filesystem::path &log, std::uint64_t lines) {
    EventList list;
    addSamples(list, log, lines);
    const Turns hosts = counting(list, "*");
    const Turns texts = counting(list, "*interface*down*");
    const Turns removals = removing(list);
    const Turns found = finding(list);
    std::printf(
        "%llu events: a filter by host %.3f s, by message too %.3f s, what saving removes "
        "%.3f s; a text counted on the events page %.3f s\n",
        static_cast<unsigned long long>(lines), hosts.all, texts.all, removals.all, found.all);
    bool reached = report("a filter by message, times a text counted on the events page",
                          texts.all / found.all, "", true, 3);
    reached &= report("longest turn", std::max({hosts.longest, texts.longest, removals.longest}),
                      "s", true, 0.02);
    return reached;
}

int run(const std::filesystem::path &folder) {
    const auto log = folder / "sample.log";
    writeSampleLog(log, kLines.back(), kSpacing);
    bool reached = true;
    for (const std::uint64_t lines : kLines) {
        reached &= measure(log, lines);
    }
    std::filesystem::remove(log);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER\n", argv[0]);
        return 2;
    }
    return quorbel::bench::run(argv[1]);
}
