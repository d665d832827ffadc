#include "Storing.h"

#include "Measure.h"
#include "load/LoadCheck.h"
#include "support/WaitUntil.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace quorbel::bench {

namespace {

double processorSecondsOf(pid_t process) {
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0) {
        std::fprintf(stderr, "No process %d\n", process);
        std::exit(2);
    }
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

}  // namespace

Storing store(load::Plan plan, pid_t process, const std::filesystem::path &output) {
    // Half of what either asks its socket to hold.
    plan.mostQueued = std::uint64_t{16} << 20U;
    load::LineCounter lines(output);
    const std::uint64_t before = lines.count();
    const double used = processorSecondsOf(process);
    const double usedHere = processorSecondsOf(::getpid());
    const Stopwatch watch;
    load::send(plan);
    const bool complete = testing::waitUntil([&] { return lines.count() - before >= plan.count; },
                                             std::chrono::seconds(60));
    const auto count = static_cast<double>(plan.count);
    const Storing storing{count / watch.seconds(),
                          (processorSecondsOf(process) - used) / count * 1e6,
                          (processorSecondsOf(::getpid()) - usedHere) / count * 1e6};
    if (!complete) {
        std::fprintf(stderr, "Only %lu of %lu messages were stored in %s\n", lines.count() - before,
                     plan.count, output.c_str());
        std::exit(2);
    }
    return storing;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

}  // namespace quorbel::bench
