#include "soak/ProcessFigures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace quorbel::soak {

namespace {

std::size_t entriesIn(const std::string &folder) {
    std::error_code error;
    const std::filesystem::directory_iterator entries(folder, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

double memoryIn(const std::string &rollup) {
    std::ifstream file(rollup);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Pss:")) {
            return std::stod(line.substr(4)) / 1024;
        }
    }
    return 0;
}

}  // namespace

ProcessFigures figuresOf(pid_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    return {memoryIn(folder + "/smaps_rollup"), entriesIn(folder + "/fd"),
            entriesIn(folder + "/task")};
}

}  // namespace quorbel::soak
