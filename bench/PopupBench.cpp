// What a storm of alerts costs while a popup stands on the screen and all others wait behind it:
// processor time and stalls of the main thread against a storm that asks for no popups, memory, and
// Skip All at its end. And the pace at which waiting alerts are taken.

#include "Measure.h"
#include "SampleLog.h"
#include "alerts/PopupWindow.h"
#include "common/LogReader.h"
#include "core/EventList.h"
#include "platform/gui/Appearance.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
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

constexpr std::size_t kBatch = 50;
constexpr std::size_t kBatches = 400;  // of 10 ms each
constexpr std::chrono::milliseconds kEach{10};
constexpr std::size_t kRounds = 5;
constexpr double kPatience = 60;

testing::ServiceStandIn::UserInfo notification(const std::string &priority, std::size_t number) {
    const std::string line = sampleLine(number, 0.01);
    const auto fields = splitLogLine(line);
    return {{"Type", "Set"},
            {"Date", std::to_string(std::time(nullptr))},
            {"Priority", priority},
            {"Host", std::string(fields->host)},
            {"Message", std::string(fields->message)}};
}

PopupWindow *popup() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *window = dynamic_cast<PopupWindow *>(widget);
        if (window != nullptr && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

template <typename Condition>
bool waitFor(Condition isMet, double seconds = kPatience) {
    const Stopwatch waited;
    while (!isMet() && waited.seconds() < seconds) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return isMet();
}

bool waitForPopup() {
    return waitFor([] { return popup() != nullptr; });
}

/// The longest time between two turns of the event loop.
class StallWatch {
public:
    StallWatch() {
        QObject::connect(&m_tick, &QTimer::timeout, &m_tick, [this] {
            m_longest = std::max(m_longest, m_sinceLast.seconds());
            m_sinceLast = Stopwatch();
        });
        m_tick.start(1);
    }
    [[nodiscard]] double longest() const { return m_longest; }

private:
    QTimer m_tick;
    Stopwatch m_sinceLast;
    double m_longest = 0;
};

struct Cost {
    double processor = 0;  ///< microseconds an event
    double stall = 0;      ///< in seconds
};

Cost costOfStorm(testing::ServiceStandIn &service, const testing::FrontEnd &frontEnd,
                 const std::string &priority) {
    const EventList &list = frontEnd.delegate.events;
    const std::size_t wanted = list.size() + kBatch * kBatches;
    std::thread sender([&] {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            const auto next = std::chrono::steady_clock::now() + kEach;
            service.notifyMany(
                kBatch, [&priority](std::size_t number) { return notification(priority, number); });
            std::this_thread::sleep_until(next);
        }
    });
    const StallWatch stalls;
    const ProcessorWatch processor;
    while (list.size() < wanted) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    const double used = processor.seconds() * 1e6 / static_cast<double>(kBatch * kBatches);
    sender.join();
    return {used, stalls.longest()};
}

double middle(std::array<double, kRounds> figures) {
    std::ranges::sort(figures);
    return figures[kRounds / 2];
}

/// A popup for each alert, and none for anything else.
AlertSettings popupsForAlerts() {
    return {.iPopupEvents = 3600,
            .popupSound = "",
            .popupDisplayArray = {"Alert"},
            .popupPlayArray = {}};
}

bool measureStorm(testing::ServiceStandIn &service, testing::FrontEnd &frontEnd) {
    AppDelegate &delegate = frontEnd.delegate;
    std::array<double, kRounds> ratios{};
    std::array<double, kRounds> stalls{};
    for (std::size_t round = 0; round < kRounds; ++round) {
        delegate.setAlertSettings({});
        const Cost without = costOfStorm(service, frontEnd, "Local7.Alert");
        delegate.setAlertSettings(popupsForAlerts());
        const Cost with = costOfStorm(service, frontEnd, "Local7.Alert");
        std::printf("an event: %.1f us without popups, %.1f us with; stalls %.1f ms, %.1f ms\n",
                    without.processor, with.processor, without.stall * 1e3, with.stall * 1e3);
        ratios[round] = with.processor / without.processor;
        stalls[round] = with.stall;
    }
    bool reached =
        report("longest stall, 5,000 alerts/s behind a popup", middle(stalls), "s", true, 0.02);
    reached &= report("processor time of the main thread, times that without popups",
                      middle(ratios), "of it", true, 1.5);
    return reached;
}

/// What has come to wait goes.
bool measureSkipping() {
    const PopupWindow *window = popup();
    if (window == nullptr) {
        return false;
    }
    waitFor([] { return false; }, 1);  // the popup tells their number a moment late
    auto *skip = window->findChild<QAbstractButton *>(QStringLiteral("popupSkip"));
    const auto *waiting = window->findChild<QLabel *>(QStringLiteral("popupWaiting"));
    std::printf("waiting: %s\n", qPrintable(waiting->text()));
    const StallWatch stalls;
    const Stopwatch time;
    skip->click();
    const double closed = time.seconds();
    waitFor([] { return false; }, 1);
    std::printf("skipped in %.1f ms; popups afterwards: %d\n", closed * 1e3, popup() != nullptr);
    return report("longest stall while all that wait are skipped", stalls.longest(), "s", true,
                  0.02) &&
           popup() == nullptr;
}

/// How long each of the alerts takes that a popup closed at once makes room for, and each that is
/// only passed over.
bool measurePace(testing::ServiceStandIn &service) {
    constexpr std::size_t kMany = 25;
    service.notifyMany(kMany,
                       [](std::size_t number) { return notification("Local7.Alert", number); });
    if (!waitForPopup()) {
        return false;
    }
    const Stopwatch closing;
    for (std::size_t i = 1; i < kMany; ++i) {
        popup()->close();
        if (!waitFor([] { return popup() == nullptr; }) || !waitForPopup()) {
            return false;
        }
    }
    const double each = closing.seconds() / (kMany - 1);
    service.notifyMany(kMany,
                       [](std::size_t number) { return notification("Local7.Debug", number); });
    service.notify(notification("Local7.Alert", 0));
    const Stopwatch passing;
    popup()->close();
    if (!waitFor([] { return popup() == nullptr; }) || !waitForPopup()) {
        return false;
    }
    const double passed = passing.seconds() / (kMany + 1);
    std::printf(
        "pace: %.3f s from a popup that is closed to the next, %.3f s for each event "
        "that gets none\n",
        each, passed);
    return each >= 0.2 && passed >= 0.19 &&
           report("from a popup that is closed to the next", each, "s", true, 0.3);
}

int run() {
    const testing::PrivateBus bus;
    const testing::TemporaryFolder folder;
    setenv("QUORBEL_LIBRARY", folder.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    testing::ServiceStandIn service;
    testing::FrontEnd frontEnd;
    frontEnd.window->Tools();
    if (!frontEnd.waitUntilItHears()) {
        return 1;
    }
    bool reached = measureStorm(service, frontEnd);
    const std::size_t before = residentBytes();
    reached &= measureSkipping();
    std::printf("resident: %.1f MiB, and before that was skipped %.1f MiB\n",
                static_cast<double>(residentBytes()) / (1 << 20),
                static_cast<double>(before) / (1 << 20));
    reached &= measurePace(service);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    quorbel::applyAppearance(application);
    return quorbel::bench::run();
}
