// Notifications received, counted and listed, against a receiver that only reads them; and how long
// the main thread is busy at a time under steady traffic.

#include "Measure.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/EventList.h"
#include "platform/bus/BusNames.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QTimer>

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace quorbel::bench {
namespace {

constexpr std::size_t kBurst = 100'000;

testing::ServiceStandIn::UserInfo notification(std::size_t number) {
    const std::string line = sampleLine(number, 0.01);
    const auto fields = splitLogLine(line);
    return {{"Type", "Set"},
            {"Date", std::string(fields->date)},
            {"Priority", std::string(fields->priority)},
            {"Host", std::string(fields->host)},
            {"Message", std::string(fields->message)}};
}

/// Reads every string of a notification and forgets it.
int readBare(sd_bus_message *message, void *count, sd_bus_error * /*error*/) {
    sd_bus_message_enter_container(message, 'a', "{ss}");
    const char *key = nullptr;
    const char *value = nullptr;
    while (sd_bus_message_read(message, "{ss}", &key, &value) > 0) {
    }
    sd_bus_message_exit_container(message);
    ++*static_cast<std::size_t *>(count);
    return 1;
}

/// Notifications a second while a burst is sent and received.
double bareRate(testing::ServiceStandIn &service) {
    sd_bus *bus = nullptr;
    std::size_t count = 0;
    sd_bus_open_system(&bus);
    sd_bus_match_signal(bus, nullptr, bus::kServiceName, bus::kServicePath,
                        bus::kNotificationInterface, bus::kNotification, &readBare, &count);
    const Stopwatch watch;
    std::thread sender([&service] { service.notifyMany(kBurst, notification); });
    while (count < kBurst) {
        if (sd_bus_process(bus, nullptr) == 0) {
            sd_bus_wait(bus, UINT64_MAX);
        }
    }
    const double rate = static_cast<double>(kBurst) / watch.seconds();
    sender.join();
    sd_bus_flush_close_unref(bus);
    return rate;
}

/// The front-end with the event list on screen.
struct FrontEnd : testing::FrontEnd {
    FrontEnd() {
        window->Scan();
        list = &delegate.events;
        QApplication::processEvents();
    }

    EventList *list = nullptr;
};

double frontEndRate(testing::ServiceStandIn &service) {
    const FrontEnd frontEnd;
    const Stopwatch watch;
    std::thread sender([&service] { service.notifyMany(kBurst, notification); });
    while (frontEnd.list->size() < kBurst) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    const double rate = static_cast<double>(kBurst) / watch.seconds();
    sender.join();
    return rate;
}

bool benchRate(testing::ServiceStandIn &service) {
    std::array<double, 5> ratios{};
    for (double &ratio : ratios) {
        const double bare = bareRate(service);
        const double ours = frontEndRate(service);
        std::printf("bare receiver %.0f/s, front-end %.0f/s\n", bare, ours);
        ratio = ours / bare;
    }
    std::ranges::sort(ratios);
    return report("notifications received, counted, listed; times bare receiver",
                  ratios[ratios.size() / 2], "of bare", false, 0.8);
}

/// The longest time between two turns of the event loop while 5,000 events a second arrive.
bool benchStall(testing::ServiceStandIn &service, const std::filesystem::path &folder) {
    constexpr std::size_t kBatch = 50;
    constexpr std::size_t kBatches = 500;
    writeSampleLog(folder / "sample.log", 1'000'000, 0.08);
    const FrontEnd frontEnd;
    std::thread sender([&service] {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            const auto next = std::chrono::steady_clock::now() + std::chrono::milliseconds(10);
            service.notifyMany(kBatch, notification);
            std::this_thread::sleep_until(next);
        }
    });
    double longest = 0;
    Stopwatch sinceLast;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceLast.seconds());
        sinceLast = Stopwatch();
    });
    tick.start(1);
    while (frontEnd.list->size() < 1'000'000 + kBatch * kBatches) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    sender.join();
    return report("longest stall, 5,000 events/s, 1 million rows on screen", longest, "s", true,
                  0.1);
}

int run() {
    const testing::PrivateBus bus;
    const testing::TemporaryFolder folder;
    setenv("QUORBEL_LIBRARY", folder.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    testing::ServiceStandIn service;
    bool reached = benchRate(service);
    reached &= benchStall(service, folder.path());
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    return quorbel::bench::run();
}
