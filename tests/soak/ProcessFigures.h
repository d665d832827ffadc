#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quorbel::soak {

/// What a process has at a moment.
struct ProcessFigures {
    double memory = 0;  ///< MiB of its own, its share of what others have as well (PSS)
    std::vector<std::string> descriptors{};  ///< what is open, sorted
    std::vector<std::string> threads{};      ///< their names, sorted
};

/// Nothing at all when there is no such process.
ProcessFigures figuresOf(pid_t process);

}  // namespace quorbel::soak
