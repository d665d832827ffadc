#include "MemoryWatch.h"

#include "Measure.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

namespace quorbel::bench {

namespace {

constexpr double kMebibyte = 1024.0 * 1024.0;

/// Sizes of the files in memory of this process's open descriptors.
template <typename Handle>
void forEachMemoryFile(const Handle &handle) {
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const auto target = std::filesystem::read_symlink(entry, error);
        if (!error && target.string().starts_with("/memfd:")) {
            const auto size = std::filesystem::file_size(entry, error);
            handle(error ? 0 : static_cast<std::size_t>(size));
        }
    }
}

double statusOf(pid_t process, const std::string &name) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) {
            return std::stod(line.substr(name.size() + 1)) / 1024;
        }
    }
    return 0;
}

}  // namespace

MemoryWatch::MemoryWatch() : m_before(residentBytes()), m_most(m_before) {
    m_thread = std::thread([this] {
        while (!m_stop) {
            look();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
}

MemoryWatch::~MemoryWatch() {
    m_stop = true;
    m_thread.join();
}

void MemoryWatch::look() {
    std::size_t memory = residentBytes();
    forEachMemoryFile([&](std::size_t size) {
        memory += size;
        m_largestFile = std::max(m_largestFile.load(), size);
    });
    m_most = std::max(m_most.load(), memory);
}

double MemoryWatch::grown() const {
    return static_cast<double>(m_most - m_before) / kMebibyte;
}

double MemoryWatch::largestFile() const {
    return static_cast<double>(m_largestFile) / kMebibyte;
}

double peakResident(pid_t process) {
    return statusOf(process, "VmHWM");
}

double resident(pid_t process) {
    return statusOf(process, "VmRSS");
}

void forgetPeak(pid_t process) {
    std::ofstream("/proc/" + std::to_string(process) + "/clear_refs") << 5;
}

}  // namespace quorbel::bench
