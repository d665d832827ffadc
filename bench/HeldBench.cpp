// A million events that wait for their alerts while the list is read anew: what their leaving costs
// the main thread, and what they take then, beside what the list took for them.

#include "Measure.h"
#include "SampleList.h"
#include "SampleLog.h"
#include "core/Event.h"
#include "core/MessagePacking.h"

#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <thread>

namespace quorbel::bench {
namespace {

constexpr std::uint64_t kEvents = 1'000'000;
constexpr std::size_t kReleasedAtOnce = 10'000;
constexpr const char *kFormat = "yyyy-MM-dd HH:mm:ss";

void packAll(EventList &list) {
    MessagePacking packing(list);
    while (packing.step()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

std::size_t memoryNow() {
    ::malloc_trim(0);
    return residentBytes();
}

double megabytes(std::size_t bytes) {
    return static_cast<double>(bytes) / (1 << 20);
}

/// The longest time that it took to let go of some thousands.
double letGo(std::deque<Event> &waiting) {
    double longest = 0;
    while (!waiting.empty()) {
        const Stopwatch turn;
        for (std::size_t i = 0; i < kReleasedAtOnce && !waiting.empty(); ++i) {
            waiting.pop_back();
        }
        longest = std::max(longest, turn.seconds());
    }
    return longest;
}

/// Whether the first, the middle and the last one read as they did.
bool areReadable(const std::deque<Event> &waiting) {
    return std::ranges::all_of(std::array{std::size_t{0}, waiting.size() / 2, waiting.size() - 1},
                               [&](std::size_t number) {
                                   return waiting[number].value("Message").has_value() &&
                                          waiting[number].value("Date").has_value();
                               });
}

int run(const std::filesystem::path &folder) {
    const std::filesystem::path log = folder / "held.log";
    writeSampleLog(log, kEvents, 0.04);
    const std::size_t empty = memoryNow();
    EventList list;
    addSamples(list, log);
    std::filesystem::remove(log);
    list.show(stateWithFormat(kFormat));
    packAll(list);
    const std::size_t listed = memoryNow() - empty;

    std::deque<Event> waiting;
    double longestHold = 0;
    for (std::size_t row = list.size(); row > 0; --row) {
        const EventId id = list.idAt(row - 1);
        const Stopwatch held;
        waiting.emplace_back(list, id);
        longestHold = std::max(longestHold, held.seconds());
    }
    const std::size_t both = memoryNow() - empty;
    const Stopwatch leaving;
    list.removeRows({{0, list.size()}});
    const double left = leaving.seconds();
    const std::size_t alone = memoryNow() - empty;
    std::printf("memory: the list %.0f MiB, with those who hold each %.0f MiB, these alone %.0f\n",
                megabytes(listed), megabytes(both), megabytes(alone));

    bool reached = areReadable(waiting);
    reached &= report("a million held events leave the list", left, "s", true, 0.1);
    reached &= report("memory of those that left, times the list's",
                      static_cast<double>(alone) / static_cast<double>(listed), "of it", true, 2);
    reached &= report("longest time to hold one of a million", longestHold, "s", true, 0.02);
    reached &= report("ten thousand that left are let go of", letGo(waiting), "s", true, 0.02);
    std::printf("memory when none is held: %.0f MiB\n", megabytes(memoryNow() - empty));
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int /*argc*/, char **argv) {
    return quorbel::bench::run(argv[1]);
}
