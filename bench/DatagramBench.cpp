// Datagrams stored by the service, against a widely used syslog server: bench_datagrams RSYSLOG,
// the folder that its packages were unpacked into. The two take turns, by how many datagrams a
// sender sends at once, and at a quiet rate by what a message takes of the processor.

#include "Measure.h"
#include "Storing.h"
#include "Yardstick.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace quorbel::bench {
namespace {

constexpr std::size_t kRounds = 5;

struct Form {
    const char *name;
    load::Plan plan;
    double leastRate = 0;  ///< times the yardstick's; 0: no aim
    double mostTime = 0;   ///< the same, of the processor's time
};

const std::vector<Form> &forms() {
    static const std::vector<Form> all{
        {"one a call", {.count = 300'000, .perCall = 1}, 1.0, 0},
        {"64 a call", {.count = 400'000, .cutByKernel = false}, 1.5, 0},
        {"64 a call, cut by the kernel", {.count = 640'000}, 1.5, 0},
        {"17,000/s, one a call", {.count = 51'000, .perSecond = 17'000, .perCall = 1}, 0, 1.0},
        {"17,000/s, nine a call", {.count = 51'000, .perSecond = 17'000}, 0, 1.0},
    };
    return all;
}

Storing storeByYardstick(load::Plan plan, const std::filesystem::path &packages) {
    const Yardstick yardstick(packages);
    plan.port = yardstick.port();
    return store(plan, yardstick.pid(), yardstick.output());
}

Storing storeByService(load::Plan plan) {
    const testing::TemporaryFolder library;
    const testing::ServiceProcess service({library.path(), "", {"--port", "0"}});
    plan.port = service.port();
    return store(plan, service.pid(), library.path());
}

bool compare(const Form &form, const std::filesystem::path &packages) {
    std::vector<double> rates;
    std::vector<double> times;
    for (std::size_t round = 0; round < kRounds; ++round) {
        const Storing theirs = storeByYardstick(form.plan, packages);
        const Storing ours = storeByService(form.plan);
        rates.push_back(ours.perSecond / theirs.perSecond);
        times.push_back(ours.microsecondsEach / theirs.microsecondsEach);
        std::printf(
            "  %s: %.0f/s at %.2f us of the processor (and %.2f us of the sender's), yardstick "
            "%.0f/s at %.2f us (and %.2f us)\n",
            form.name, ours.perSecond, ours.microsecondsEach, ours.senderEach, theirs.perSecond,
            theirs.microsecondsEach, theirs.senderEach);
    }
    const std::string name = std::string("datagrams, ") + form.name;
    std::printf(
        "  %s: rate %.2f (%.2f to %.2f), processor time %.2f (%.2f to %.2f) of the yardstick's, "
        "medians of %zu pairs\n",
        form.name, median(rates), std::ranges::min(rates), std::ranges::max(rates), median(times),
        std::ranges::min(times), std::ranges::max(times), kRounds);
    const bool isFast = form.leastRate == 0 || report(name + ", times rsyslog's rate",
                                                      median(rates), "", false, form.leastRate);
    const bool isFrugal = form.mostTime == 0 || report(name + ", times rsyslog's time",
                                                       median(times), "", true, form.mostTime);
    return isFast && isFrugal;
}

}  // namespace
}  // namespace quorbel::bench

int main(int count, char **values) {
    using namespace quorbel;
    if (count != 2) {
        std::fputs("Usage: bench_datagrams RSYSLOG-FOLDER\n", stderr);
        return 2;
    }
    bool reached = true;
    for (const bench::Form &form : bench::forms()) {
        reached = bench::compare(form, values[1]) && reached;
    }
    return reached ? EXIT_SUCCESS : EXIT_FAILURE;
}
