#pragma once

#include "load/LoadSender.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel::load {

/// What the log files of a folder hold of a plan's messages.
struct Tally {
    std::uint64_t stored = 0;      ///< different messages of the plan
    std::uint64_t repeated = 0;    ///< further copies of these
    std::uint64_t disordered = 0;  ///< behind one with a higher number
    std::uint64_t altered = 0;     ///< of this plan, but with another priority, host or text
    std::uint64_t cut = 0;         ///< beginnings of a message, which a crash may leave
    std::uint64_t others = 0;      ///< whole lines of somebody else
    std::uint64_t damaged = 0;     ///< lines that are no event as the service writes it
    std::vector<bool> has;         ///< for each message of the plan, from the first on

    /// Whether every stored line is one that was sent, as it was sent, once; but for what a crash
    /// cut.
    [[nodiscard]] bool isClean() const { return repeated + altered + damaged == 0; }
};

/// Whether a line, with its end, is exactly one event as the service writes it.
bool isWholeLine(std::string_view line);

Tally tally(const std::filesystem::path &folder, const Plan &plan);
/// One line for people.
std::string describe(const Tally &tally);

/// A counter's last value in what the service says of itself ("stored 17"); 0 when it says nothing.
std::uint64_t counter(std::string_view journal, std::string_view name);

/// Counts the lines of files that grow: reads what is new only.
class LineCounter {
public:
    /// A file, or a folder whose log files are meant.
    explicit LineCounter(std::filesystem::path path) : m_path(std::move(path)) {}

    std::uint64_t count();

private:
    void readNew(const std::filesystem::path &file);

    const std::filesystem::path m_path;
    std::filesystem::path m_file;
    std::uint64_t m_offset = 0;
    std::uint64_t m_count = 0;
};

}  // namespace quorbel::load
