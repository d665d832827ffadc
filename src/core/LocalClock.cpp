#include "core/LocalClock.h"

#include <ctime>

namespace quorbel {

std::int64_t LocalClock::offsetAt(std::int64_t moment) {
    const auto time = static_cast<std::time_t>(moment);
    std::tm local{};
    return localtime_r(&time, &local) == nullptr ? 0 : local.tm_gmtoff;
}

}  // namespace quorbel
