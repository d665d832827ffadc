#include "Measure.h"
#include "SampleLog.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

namespace quorbel::bench {

namespace {

constexpr std::uint64_t kDays = 20;
constexpr std::uint64_t kLinesADay = 100'000;

double bestOf(const std::string &command) {
    double best = processorSecondsOf(command);
    for (int i = 0; i < 4; ++i) {
        best = std::min(best, processorSecondsOf(command));
    }
    return best;
}

/// The largest that any program was which this one has started, in MB.
double largestMegabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

void writeDays(const std::filesystem::path &folder) {
    for (std::uint64_t day = 0; day < kDays; ++day) {
        writeSampleLog(folder / ("2026-10-" + std::to_string(10 + day) + ".log"), kLinesADay, 0.8);
    }
}

/// quorbelctl over two million lines in a folder, beside ripgrep over the same.
bool run(const std::filesystem::path &folder) {
    std::filesystem::create_directory(folder);
    writeDays(folder);
    const std::string control = "QUORBEL_LIBRARY='" + folder.string() + "' '" QUORBELCTL_PATH "' ";
    const double plain = bestOf(control + "find 'failed' > /dev/null || true");
    const double expression = bestOf(control + "find -e 'fail(ed|ure)' > /dev/null || true");
    bestOf(control + "stats > /dev/null");
    // Before other programs are started.
    bool reached =
        report("largest memory of finding and counting", largestMegabytes(), "MB", true, 64);
    const double ripgrep =
        bestOf("rg -c -i -F failed '" + folder.string() + "' > /dev/null || true");
    const double ripgrepExpression =
        bestOf("rg -c -i 'fail(ed|ure)' '" + folder.string() + "' > /dev/null || true");
    reached = report("finding a text in the files", plain / ripgrep, "of rg", true, 20) && reached;
    reached = report("finding an expression in the files", expression / ripgrepExpression, "of rg",
                     true, 20) &&
              reached;
    const double last = bestOf(control + "tail > /dev/null");
    reached = report("the last ten events", last * 1000, "ms", true, 50) && reached;
    std::filesystem::remove_all(folder);
    return reached;
}

}  // namespace

}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    return quorbel::bench::run(std::filesystem::path(argv[1]) / "control") ? 0 : 1;
}
