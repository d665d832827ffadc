// Deleting a million events and undoing that, with the real window's classes and the real service:
// memory on both sides while the command is put together, sent and carried out, and for how long
// the window is busy.

#include "Measure.h"
#include "MemoryWatch.h"
#include "SampleLog.h"
#include "core/EventList.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quorbel::bench {
namespace {

constexpr std::size_t kEvents = 1'000'000;
constexpr double kDay = 0.08;  // seconds from one event to the next
constexpr double kMostMemory = 200;
constexpr double kMostOfDeletion = 250;  // the command is read where it stands, over and over
constexpr std::chrono::minutes kPatience{2};

void press(const testing::FrontEnd &window, const char *title, bool tick) {
    auto &box = window.control<QMessageBox>("alertBox");
    if (tick) {
        box.checkBox()->setChecked(true);
    }
    const auto buttons = box.buttons();
    (*std::ranges::find(buttons, QLatin1String(title), &QAbstractButton::text))->click();
    box.setObjectName(QString());
}

std::uintmax_t bytesIn(const std::filesystem::path &folder) {
    std::uintmax_t bytes = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        std::error_code gone;
        const auto size = entry.path().extension() == ".log" ? entry.file_size(gone) : 0;
        bytes += gone ? 0 : size;
    }
    return bytes;
}

/// How long the main thread stands still: since this was made, and of that on a processor.
struct Busy {
    Stopwatch wall;
    ProcessorWatch processor;
};

struct Stall {
    double seconds = 0;
    double processor = 0;

    void add(const Busy &busy) {
        seconds = std::max(seconds, busy.wall.seconds());
        processor = std::max(processor, busy.processor.seconds());
    }
};

/// Lets the window work until the log files have that size; the longest turn of its event loop.
Stall workUntil(const std::filesystem::path &folder, std::uintmax_t bytes) {
    Stall longest;
    const Stopwatch watch;
    Stopwatch sinceLook;
    while (watch.seconds() < static_cast<double>(std::chrono::seconds(kPatience).count())) {
        const Busy turn;
        QApplication::processEvents();
        longest.add(turn);
        if (sinceLook.seconds() > 0.05) {
            if (bytesIn(folder) == bytes) {
                return longest;
            }
            sinceLook = {};
        }
    }
    std::printf("The log files have %ju bytes after two minutes.\n", bytesIn(folder));
    std::exit(1);  // NOLINT(concurrency-mt-unsafe)
}

/// Waits until a process has given back what it took for a command, a file in memory that it maps:
/// that is after the log files are as they will be.
void workUntilCommandEnds(pid_t process) {
    constexpr double kCalm = 0.2;
    for (Stopwatch calm; calm.seconds() < kCalm;) {
        QApplication::processEvents();
        std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
        const std::string all(std::istreambuf_iterator<char>(maps), {});
        if (all.find("memfd:") != std::string::npos) {
            calm = {};
        }
    }
}

/// Of one command: what it was, how long the window stood still, what both took for it.
bool reportCommand(const std::string &what, const MemoryWatch &memory, const Stall &stall,
                   double longestStall, double service, double mostOfService) {
    std::printf(
        "%s: a command of %.0f MiB, for which the service took up to %.0f MiB more; of the "
        "longest stall %.3f s on a processor\n",
        what.c_str(), memory.largestFile(), service, stall.processor);
    bool reached = report("longest stall of " + what, stall.seconds, "s", true, longestStall);
    reached &= report("most memory of the window, with the command, " + what, memory.grown(), "MiB",
                      true, kMostMemory);
    reached &= report("most memory of the service, " + what, service, "MiB", true, mostOfService);
    return reached;
}

bool benchDeletion() {
    const testing::TemporaryFolder folder;
    const std::uintmax_t bytes = writeSampleLog(folder.path() / "sample.log", kEvents, kDay);
    setenv("QUORBEL_LIBRARY", folder.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    const testing::PrivateBus bus;
    const testing::ServiceProcess service({.library = folder.path(), .busAddress = bus.address()});
    const testing::FrontEnd window;
    window.window->Scan();
    QApplication::processEvents();
    const auto serviceGrown = [&, before = resident(service.pid())] {
        return peakResident(service.pid()) - before;
    };
    bool reached = window.delegate.events.size() == kEvents && service.isListening();
    {
        const MemoryWatch memory;
        window.control<QAbstractButton>("deleteEvents").click();
        press(window, "OK", true);
        Stall stall;
        const Busy busy;
        press(window, "Yes", false);
        stall.add(busy);
        workUntil(folder.path(), 0);
        reached &= reportCommand("deleting 1 million events", memory, stall, 2, serviceGrown(),
                                 kMostOfDeletion);
    }
    workUntilCommandEnds(service.pid());
    forgetPeak(service.pid());
    const MemoryWatch memory;
    const Busy busy;
    window.control<QAction>("undoDelete").trigger();
    Stall stall = {busy.wall.seconds(), busy.processor.seconds()};
    std::printf("putting them back into the list: %.3f s\n", stall.seconds);
    const Stall later = workUntil(folder.path(), bytes);
    stall = {std::max(stall.seconds, later.seconds), std::max(stall.processor, later.processor)};
    reached &= reportCommand("undoing that", memory, stall, 0.1, serviceGrown(), kMostMemory);
    return reached;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    return quorbel::bench::benchDeletion() ? 0 : 1;
}
