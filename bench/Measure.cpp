#include "Measure.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>

namespace quorbel::bench {

double crowdedSeconds() {
    std::ifstream schedule("/proc/thread-self/schedstat");
    double ran = 0;
    double waited = 0;
    schedule >> ran >> waited;
    return waited * 1e-9;
}

std::size_t residentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

double ProcessorWatch::used() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double processorSecondsOf(const std::string &command) {
    const auto used = [] {
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    };
    const double before = used();
    secondsOf(command);
    return used() - before;
}

double secondsOf(const std::string &command) {
    const Stopwatch watch;
    if (std::system(command.c_str()) != 0) {  // NOLINT(concurrency-mt-unsafe,cert-env33-c)
        std::fprintf(stderr, "Failed: %s\n", command.c_str());
        std::exit(2);
    }
    return watch.seconds();
}

bool report(const std::string &what, double figure, const std::string &unit, bool atMost,
            double aim) {
    const bool reached = atMost ? figure <= aim : figure >= aim;
    std::printf("%-62s %9.3f %-9s (%s %g)  %s\n", what.c_str(), figure, unit.c_str(),
                atMost ? "at most" : "at least", aim, reached ? "reached" : "MISSED");
    std::fflush(stdout);
    return reached;
}

}  // namespace quorbel::bench
