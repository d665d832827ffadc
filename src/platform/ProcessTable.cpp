#include "platform/ProcessTable.h"

#include "platform/Files.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace quorbel {

namespace {

constexpr std::size_t kTableNameLength = 16;
constexpr std::size_t kKernelNameLength = 15;  // TASK_COMM_LEN without its NUL

// The 16th character of a name that the kernel cut, as far as the command line tells it.
std::string restoredName(const std::filesystem::path &process, std::string name) {
    const std::optional<std::string> commandLine = readFile(process / "cmdline");
    if (!commandLine) {
        return name;
    }
    std::string_view program = std::string_view(*commandLine).substr(0, commandLine->find('\0'));
    program.remove_prefix(program.rfind('/') + 1);
    return program.starts_with(name) ? std::string(program.substr(0, kTableNameLength)) : name;
}

std::optional<std::string> shortName(const std::filesystem::path &process) {
    std::optional<std::string> name = readFile(process / "comm");
    if (!name || !name->ends_with('\n')) {
        return std::nullopt;
    }
    name->pop_back();
    return name->size() < kKernelNameLength ? name : restoredName(process, std::move(*name));
}

// An exited process keeps its entry until its parent has asked for its result.
bool hasExited(const std::filesystem::path &process) {
    const std::optional<std::string> status = readFile(process / "stat");
    if (!status) {
        return true;
    }
    // "pid (name) state ...", where the name may hold parentheses and spaces.
    const std::size_t nameEnd = status->rfind(") ");
    return nameEnd == std::string::npos || status->find_first_of("ZX", nameEnd) == nameEnd + 2;
}

bool isProcessFolder(const std::filesystem::path &path) {
    const std::string name = path.filename().string();
    return std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c) != 0; });
}

}  // namespace

bool isProcessRunning(std::string_view name) {
    if (name.size() > kTableNameLength) {
        return false;
    }
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::filesystem::path &process = entry->path();
        if (isProcessFolder(process) && shortName(process) == name && !hasExited(process)) {
            return true;
        }
    }
    return false;
}

}  // namespace quorbel
