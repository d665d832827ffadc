// The start-up load on all cores and on one, beside awk over the same file; from a cold page cache,
// beside cat; time and memory of a line as lists grow, beside those of a list of two million.

#include "Measure.h"
#include "SampleLog.h"
#include "core/EventHold.h"
#include "core/EventIntake.h"
#include "core/EventList.h"
#include "core/LogLoad.h"
#include "support/NoHomePage.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace quorbel::bench {
namespace {

constexpr double kSpacing = 0.04;
constexpr std::uint64_t kReference = 2'000'000;

/// A library with one log file, while the object lives.
class Library {
public:
    Library(const std::filesystem::path &folder, std::uint64_t lines)
        : m_folder(folder), m_lines(lines) {
        std::filesystem::create_directories(m_folder);
        m_bytes = static_cast<double>(writeSampleLog(file(), lines, kSpacing));
    }
    ~Library() { std::filesystem::remove_all(m_folder); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    [[nodiscard]] const std::filesystem::path &folder() const { return m_folder; }
    [[nodiscard]] std::filesystem::path file() const { return m_folder / "sample.log"; }
    [[nodiscard]] double lines() const { return static_cast<double>(m_lines); }
    [[nodiscard]] double bytes() const { return m_bytes; }

private:
    std::filesystem::path m_folder;
    std::uint64_t m_lines;
    double m_bytes = 0;
};

class NoEventsPage : public EventListPageLink {
public:
    [[nodiscard]] bool isOnScreen() const override { return false; }
    EventId insertEvent(const EventFields & /*event*/) override { return 0; }
    [[nodiscard]] bool canInsertMany() const override { return true; }
    void insertEvents(LoadedEvents /*events*/) override {}
    void removeEvent(const EventFields & /*announced*/) override {}
    void setFilter(const EventQuery & /*query*/) override {}
};

struct Load {
    double seconds = 0;
    double processorSeconds = 0;  // of all threads
    double memory = 0;            // bytes
    double events = 0;
};

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void keepToOneProcessor() {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    sched_setaffinity(0, sizeof one, &one);
}

Load load() {
    AppState state;
    EventList events;
    EventHold hold(events);
    NoEventsPage page;
    testing::NoHomePage home;
    EventIntake intake(state, events, hold, page, home);
    const std::size_t memory = residentBytes();
    const double processor = processorSeconds();
    const Stopwatch watch;
    intake.initializeLog();
    return {.seconds = watch.seconds(),
            .processorSeconds = processorSeconds() - processor,
            .memory = static_cast<double>(residentBytes() - memory),
            .events = static_cast<double>(events.size())};
}

/// Loads in a process of its own, whose memory nothing was done with before.
Load loadApart(const Library &library, bool onOneProcessor) {
    void *shared =
        mmap(nullptr, sizeof(Load), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    const pid_t child = fork();
    if (child == 0) {
        setenv("QUORBEL_LIBRARY", library.folder().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
        if (onOneProcessor) {
            keepToOneProcessor();
        }
        *static_cast<Load *>(shared) = load();
        _exit(0);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0) {
        std::fprintf(stderr, "Failed: the load\n");
        std::exit(2);
    }
    const Load result = *static_cast<Load *>(shared);
    munmap(shared, sizeof(Load));
    return result;
}

double median(std::vector<double> figures) {
    std::ranges::sort(figures);
    return figures[figures.size() / 2];
}

/// The medians of rounds in which each was measured once, so that other work meets all alike.
struct Rounds {
    std::vector<double> awk, awkProcessor, all, allProcessor, one, oneProcessor;
    std::vector<double> allToAwk, oneToAll, processorToAwk;
    std::vector<double> lineTime, lineMemory;  // times those of the reference
    Load last;
};

void compareLines(const Load &load, const Library &library, const Library &reference,
                  Rounds &rounds) {
    const Load other = loadApart(reference, false);
    const double times = library.lines() / reference.lines();
    rounds.lineTime.push_back(load.processorSeconds / other.processorSeconds / times);
    rounds.lineMemory.push_back(load.memory / other.memory / times);
}

Rounds measure(const Library &library, const Library &reference, int count) {
    const std::string awk = "awk -F, '{c[$3]++}' '" + library.file().string() + "'";
    secondsOf(awk);
    Rounds rounds;
    for (int i = 0; i < count; ++i) {
        const double before = processorSecondsOf(":");
        const Stopwatch watch;
        const double processor = processorSecondsOf(awk) - before;
        const double seconds = watch.seconds();
        const Load all = loadApart(library, false);
        const Load one = loadApart(library, true);
        rounds.awk.push_back(seconds);
        rounds.awkProcessor.push_back(processor);
        rounds.all.push_back(all.seconds);
        rounds.allProcessor.push_back(all.processorSeconds);
        rounds.one.push_back(one.seconds);
        rounds.oneProcessor.push_back(one.processorSeconds);
        rounds.allToAwk.push_back(all.seconds / seconds);
        rounds.oneToAll.push_back(one.seconds / all.seconds);
        rounds.processorToAwk.push_back(all.processorSeconds / processor);
        rounds.last = all;
        compareLines(all, library, reference, rounds);
    }
    std::printf(
        "  wall: awk %.3f, all cores %.3f, one %.3f s; processor: %.3f, %.3f, %.3f s; "
        "best: %.3f, %.3f, %.3f s\n",
        median(rounds.awk), median(rounds.all), median(rounds.one), median(rounds.awkProcessor),
        median(rounds.allProcessor), median(rounds.oneProcessor), std::ranges::min(rounds.awk),
        std::ranges::min(rounds.all), std::ranges::min(rounds.one));
    return rounds;
}

/// A list costs a line as much time and memory as one of the reference's size does. A short one has
/// what does not grow, too.
bool reportLine(const Library &library, const Rounds &rounds, const std::string &name) {
    std::printf(
        "  a line: %.0f ns, %.1f bytes; times those of %.0f lines: %.2f (%.2f to %.2f), %.2f\n",
        median(rounds.allProcessor) / library.lines() * 1e9, rounds.last.memory / library.lines(),
        static_cast<double>(kReference), median(rounds.lineTime), std::ranges::min(rounds.lineTime),
        std::ranges::max(rounds.lineTime), median(rounds.lineMemory));
    if (library.lines() <= static_cast<double>(kReference)) {
        return true;
    }
    bool reached = report("a line's processor time, times that of 2 million, " + name,
                          median(rounds.lineTime), "times", true, 1.1);
    reached &= report("a line's memory, times that", median(rounds.lineMemory), "times", true, 1.1);
    return reached;
}

void evict(const std::filesystem::path &file) {
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    fsync(fd);
    posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    close(fd);
}

bool benchCold(const Library &library, int count, const std::string &name) {
    std::vector<double> ratios;
    std::vector<double> cats;
    std::vector<double> loads;
    for (int i = 0; i < count; ++i) {
        evict(library.file());
        cats.push_back(secondsOf("cat '" + library.file().string() + "' > /dev/null"));
        evict(library.file());
        loads.push_back(loadApart(library, false).seconds);
        ratios.push_back(loads.back() / cats.back());
    }
    std::printf("  cold: cat %.3f s, load %.3f s; load by cat %.2f to %.2f\n", median(cats),
                median(loads), std::ranges::min(ratios), std::ranges::max(ratios));
    return report("load from a cold page cache, times cat, " + name, median(ratios), "of cat", true,
                  1.2);
}

bool benchLoading(const Library &library, const Library &reference, int count) {
    const std::string name = std::to_string(static_cast<std::uint64_t>(library.lines())) + " lines";
    std::printf("%s, %.1f bytes each\n", name.c_str(), library.bytes() / library.lines());
    const Rounds rounds = measure(library, reference, count);
    bool reached = rounds.last.events == library.lines();
    reached &= report("load on all cores, times awk, " + name, median(rounds.allToAwk), "of awk",
                      true, 0.4);
    reached &= report("the same, processor time", median(rounds.processorToAwk), "of awk", true, 1);
    reached &= report("load on one core, times all", median(rounds.oneToAll), "times", false, 1.7);
    reached &= report("resident memory of that list, times the files",
                      rounds.last.memory / library.bytes(), "of bytes", true, 1);
    reached &= reportLine(library, rounds, name);
    reached &= benchCold(library, count, name);
    return reached;
}

int run(const std::filesystem::path &folder, const std::vector<std::uint64_t> &sizes) {
    std::printf("%zu processors\n", LogLoad::processors());
    const Library reference(folder / "reference", kReference);
    bool reached = true;
    for (const std::uint64_t lines : sizes) {
        const Library library(folder / "library", lines);
        reached &= benchLoading(library, reference, lines > kReference ? 3 : 5);
    }
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [LINES...]\n", argv[0]);
        return 2;
    }
    std::vector<std::uint64_t> sizes;
    for (int i = 2; i < argc; ++i) {
        sizes.push_back(std::strtoull(argv[i], nullptr, 10));
    }
    if (sizes.empty()) {
        sizes = {100'000, 2'000'000, 10'000'000};
    }
    return quorbel::bench::run(argv[1], sizes);
}
