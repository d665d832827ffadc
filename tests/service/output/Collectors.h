#pragma once

#include "platform/UniqueFd.h"
#include "service/output/Life.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace quorbel::testing {

/// Starts and kills collectors, one at a time, from a process of its own that has no threads: in
/// the copy of a process that has some, a lock can stay taken for good. So make it before there are
/// any.
class Collectors {
public:
    /// What a collector needs to know besides, which comes with its start.
    struct Places {
        std::filesystem::path library;
        std::filesystem::path ledger;
        std::string clusterServer;
        std::filesystem::path passwordFile;
        std::filesystem::path authorityFile;
        std::uint16_t forwardPort = 0;
    };

    explicit Collectors(CollectorTalk &talk);
    /// Kills the one that runs.
    ~Collectors();
    Collectors(const Collectors &) = delete;
    Collectors &operator=(const Collectors &) = delete;

    void start(const Places &places, unsigned seed);
    /// Returns when it has ended; at once when none runs.
    void kill();

    [[nodiscard]] static Life::Setup setupOf(const Places &places);

private:
    void ask(const std::string &text);

    UniqueFd m_line;
    pid_t m_starter = -1;
};

}  // namespace quorbel::testing
