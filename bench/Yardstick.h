#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>

namespace quorbel::bench {

/// A widely used syslog server with its usual inputs, which writes one file, as a child process.
class Yardstick {
public:
    /// `packages` is the folder that its packages were unpacked into. Returns when it listens;
    /// exits with a message when it does not.
    explicit Yardstick(const std::filesystem::path &packages);
    ~Yardstick();
    Yardstick(const Yardstick &) = delete;
    Yardstick &operator=(const Yardstick &) = delete;

    /// Of UDP and TCP.
    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] pid_t pid() const { return m_process; }
    [[nodiscard]] std::filesystem::path output() const { return m_folder.path() / "messages"; }

private:
    testing::TemporaryFolder m_folder;
    const std::uint16_t m_port;
    pid_t m_process = -1;
};

}  // namespace quorbel::bench
