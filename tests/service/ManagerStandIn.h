#pragma once

#include "platform/UniqueFd.h"
#include "service/input/ListenSockets.h"
#include "support/ServiceProcess.h"

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::testing {

/// Does for the service what its manager does: holds its ports open, and keeps the descriptors that
/// it is given for the next process.
class ManagerStandIn {
public:
    /// Makes a socket in `folder`.
    explicit ManagerStandIn(const std::filesystem::path &folder);
    ~ManagerStandIn();
    ManagerStandIn(const ManagerStandIn &) = delete;
    ManagerStandIn &operator=(const ManagerStandIn &) = delete;

    [[nodiscard]] const ListenSockets &listeners() const { return m_listeners; }
    /// With everything that it has for the next process.
    [[nodiscard]] ServiceProcess::Setup setup() const;
    /// The names of what it keeps, in order.
    [[nodiscard]] std::vector<std::string> kept() const;

private:
    struct Kept {
        std::string name;
        UniqueFd fd;
    };

    void listen();
    bool receive();
    void handle(const std::string &text, UniqueFd fd);

    ListenSockets m_listeners;
    std::string m_path;
    UniqueFd m_socket;
    mutable std::mutex m_mutex;
    std::vector<Kept> m_kept;  ///< under m_mutex
    std::thread m_thread;
};

}  // namespace quorbel::testing
