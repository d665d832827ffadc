// Preloaded into the service by a test: from when there is a file of the name that
// QUORBEL_LOOP_FAULT names, the event loop fails.

#include <dlfcn.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>

extern "C" int sd_event_run(sd_event *loop, std::uint64_t microseconds) {
    const auto real = reinterpret_cast<decltype(&sd_event_run)>(dlsym(RTLD_NEXT, "sd_event_run"));
    const char *fault = std::getenv("QUORBEL_LOOP_FAULT");  // NOLINT(concurrency-mt-unsafe)
    return fault != nullptr && access(fault, F_OK) == 0 ? -EBADF : real(loop, microseconds);
}
