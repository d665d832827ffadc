#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace quorbel::bench {

/// Seconds since it was made.
class Stopwatch {
public:
    [[nodiscard]] double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// Processor seconds of this thread since it was made: other work on the machine does not count.
class ProcessorWatch {
public:
    [[nodiscard]] double seconds() const { return used() - m_start; }

private:
    static double used();

    double m_start = used();
};

/// For how long this thread could have run, but others had the processors.
double crowdedSeconds();

/// This process's resident memory in bytes.
std::size_t residentBytes();

/// The wall time of a shell command; exits with a message when it fails.
double secondsOf(const std::string &command);

/// The processor time of a shell command and all that it starts.
double processorSecondsOf(const std::string &command);

/// Prints one line: what was measured, the figure, and how it stands to its aim. Returns whether
/// the aim was reached.
bool report(const std::string &what, double figure, const std::string &unit, bool atMost,
            double aim);

}  // namespace quorbel::bench
