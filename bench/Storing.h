#pragma once

#include "load/LoadSender.h"

#include <sys/types.h>

#include <filesystem>
#include <vector>

namespace quorbel::bench {

/// How a process stored messages.
struct Storing {
    double perSecond = 0;         ///< from the first that was sent to the last that is in the files
    double microsecondsEach = 0;  ///< of the processor, all threads and the kernel's work for them
    double senderEach = 0;        ///< the same, of this process, which sends
};

/// Sends a plan to a process that writes to `output`, a file, or a folder whose log files are
/// meant, and waits until all is there. Sends no faster than it is read. Exits when a message is
/// missing.
Storing store(load::Plan plan, pid_t process, const std::filesystem::path &output);

double median(std::vector<double> values);

}  // namespace quorbel::bench
