// Preloaded into the service by tests that cannot wait for a clock: the time of day is ahead by the
// seconds in the file that QUORBEL_CLOCK_SHIFT names, and with QUORBEL_QUICK_MINUTES what the loop
// is to do in a minute or more comes ten thousand times as soon. The file that this names grows by
// a byte whenever the loop begins to wait for such a minute again.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

std::time_t shift() {
    const char *name = std::getenv("QUORBEL_CLOCK_SHIFT");  // NOLINT(concurrency-mt-unsafe)
    if (name == nullptr) {
        return 0;
    }
    std::array<char, 32> text{};
    const int file = open(name, O_RDONLY | O_CLOEXEC);
    const ssize_t count = read(file, text.data(), text.size() - 1);
    close(file);
    return count > 0 ? std::atoll(text.data()) : 0;
}

const char *quickMinutes() {
    return std::getenv("QUORBEL_QUICK_MINUTES");  // NOLINT(concurrency-mt-unsafe)
}

std::uint64_t quicker(std::uint64_t microseconds) {
    constexpr std::uint64_t kMinute = 60'000'000;
    return quickMinutes() != nullptr && microseconds >= kMinute ? microseconds / 10'000
                                                                : microseconds;
}

void countMinute() {
    const int file = open(quickMinutes(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    [[maybe_unused]] const ssize_t written = write(file, ".", 1);
    close(file);
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec *now) noexcept {
    const int result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        now->tv_sec += shift();
    }
    return result;
}

std::time_t time(std::time_t *result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}

int sd_event_add_time_relative(sd_event *loop, sd_event_source **source, clockid_t clock,
                               std::uint64_t microseconds, std::uint64_t accuracy,
                               sd_event_time_handler_t handler, void *self) {
    const auto real = reinterpret_cast<decltype(&sd_event_add_time_relative)>(
        dlsym(RTLD_NEXT, "sd_event_add_time_relative"));
    const std::uint64_t quick = quicker(microseconds);
    return real(loop, source, clock, quick, quick == microseconds ? accuracy : 1, handler, self);
}

int sd_event_source_set_time_relative(sd_event_source *source, std::uint64_t microseconds) {
    const auto real = reinterpret_cast<decltype(&sd_event_source_set_time_relative)>(
        dlsym(RTLD_NEXT, "sd_event_source_set_time_relative"));
    const std::uint64_t quick = quicker(microseconds);
    if (quick != microseconds) {
        countMinute();
    }
    return real(source, quick);
}
}
