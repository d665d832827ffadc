// What the home page costs while it is on screen and 5,000 events a second arrive, with 2 million
// listed: how long the main thread is busy at a time, and its processor time against that with
// another page on screen.

#include "Measure.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/EventList.h"
#include "platform/gui/Appearance.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>

namespace quorbel::bench {
namespace {

constexpr std::size_t kListed = 2'000'000;
constexpr std::size_t kBatch = 50;
constexpr std::size_t kBatches = 400;  // of 10 ms each
constexpr std::chrono::milliseconds kEach{10};

testing::ServiceStandIn::UserInfo notification(std::size_t number) {
    const std::string line = sampleLine(number, 0.01);
    const auto fields = splitLogLine(line);
    return {{"Type", "Set"},
            {"Date", std::to_string(std::time(nullptr))},
            {"Priority", std::string(fields->priority)},
            {"Host", std::string(fields->host)},
            {"Message", std::string(fields->message)}};
}

struct Cost {
    double processor = 0;  ///< microseconds an event
    double stall = 0;      ///< the longest time between two turns of the event loop, in seconds
};

Cost costOf(testing::ServiceStandIn &service, const testing::FrontEnd &frontEnd) {
    const EventList &list = frontEnd.delegate.events;
    const std::size_t wanted = list.size() + kBatch * kBatches;
    std::thread sender([&service] {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            const auto next = std::chrono::steady_clock::now() + kEach;
            service.notifyMany(kBatch, notification);
            std::this_thread::sleep_until(next);
        }
    });
    Cost cost;
    Stopwatch sinceLast;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        cost.stall = std::max(cost.stall, sinceLast.seconds());
        sinceLast = Stopwatch();
    });
    tick.start(1);
    const ProcessorWatch processor;
    while (list.size() < wanted) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    cost.processor = processor.seconds() * 1e6 / static_cast<double>(kBatch * kBatches);
    sender.join();
    return cost;
}

template <std::size_t kCount>
double middle(std::array<double, kCount> figures) {
    std::ranges::sort(figures);
    return figures[kCount / 2];
}

int run() {
    const testing::PrivateBus bus;
    const testing::TemporaryFolder folder;
    setenv("QUORBEL_LIBRARY", folder.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    writeSampleLog(folder.path() / "sample.log", kListed, 0.08);
    testing::ServiceStandIn service;
    const ProcessorWatch load;
    const testing::FrontEnd frontEnd;
    std::printf("loaded in %.2f s of the processor\n", load.seconds());
    if (!frontEnd.waitUntilItHears()) {
        return 1;
    }
    constexpr std::size_t kRounds = 5;
    std::array<double, kRounds> home{};
    std::array<double, kRounds> ratios{};
    std::array<double, kRounds> stalls{};
    for (std::size_t round = 0; round < kRounds; ++round) {
        frontEnd.window->Tools();
        const Cost without = costOf(service, frontEnd);
        frontEnd.window->Home();
        const Cost with = costOf(service, frontEnd);
        std::printf("an event: %.1f us with Tools, %.1f us with Home; stalls %.1f ms, %.1f ms\n",
                    without.processor, with.processor, without.stall * 1e3, with.stall * 1e3);
        home[round] = with.processor;
        ratios[round] = with.processor / without.processor;
        stalls[round] = with.stall;
    }
    std::printf("an event with Home on screen: %.1f us\n", middle(home));
    bool reached = report("longest stall, 5,000 events/s, home page on screen", middle(stalls), "s",
                          true, 0.02);
    reached &= report("processor time, home page on screen; times another page", middle(ratios),
                      "of it", true, 1.8);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    quorbel::applyAppearance(application);
    return quorbel::bench::run();
}
