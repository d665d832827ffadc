#pragma once

#include <sys/types.h>

#include <cstddef>

namespace quorbel::soak {

/// What a process has at a moment.
struct ProcessFigures {
    double memory = 0;            ///< MiB of its own, its share of what others have as well (PSS)
    std::size_t descriptors = 0;  ///< open ones
    std::size_t threads = 0;
};

/// All zero when there is no such process.
ProcessFigures figuresOf(pid_t process);

}  // namespace quorbel::soak
