#include "service/output/ShiftedClock.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

namespace quorbel::testing {

const std::atomic<std::int64_t> *clockShift = nullptr;

}  // namespace quorbel::testing

// In place of the system's.

extern "C" int clock_gettime(clockid_t clock, timespec *now) noexcept {
    const int result = static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
    const bool isOfDay = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
    if (result == 0 && isOfDay && quorbel::testing::clockShift != nullptr) {
        now->tv_sec += *quorbel::testing::clockShift;
    }
    return result;
}

extern "C" std::time_t time(std::time_t *result) noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}
