#include "soak/ProcessFigures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace quorbel::soak {

namespace {

/// What `describe` says of each entry of a folder.
template <typename Describe>
std::vector<std::string> entriesIn(const std::string &folder, Describe describe) {
    std::vector<std::string> result;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        result.push_back(describe(entry.path()));
    }
    std::ranges::sort(result);
    return result;
}

std::string targetOf(const std::filesystem::path &link) {
    std::error_code error;
    return std::filesystem::read_symlink(link, error).string();
}

std::string nameOf(const std::filesystem::path &thread) {
    std::string name;
    std::getline(std::ifstream(thread / "comm"), name);
    return name;
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
    return {memoryIn(folder + "/smaps_rollup"), entriesIn(folder + "/fd", targetOf),
            entriesIn(folder + "/task", nameOf)};
}

}  // namespace quorbel::soak
