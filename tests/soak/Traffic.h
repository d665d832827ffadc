#pragma once

#include "load/LoadSender.h"

#include <atomic>
#include <cstdint>
#include <random>
#include <thread>

namespace quorbel::soak {

/// Numbered messages of all severities to a port of this machine, on a thread of its own: some
/// thousand a second over UDP and TCP in turns, with bursts in between, and now and then one that
/// is worth an alert. A receiver that goes away is tried again.
class Traffic {
public:
    struct Rates {
        std::uint64_t calm = 2'000;      ///< messages a second
        std::uint64_t burst = 100'000;   ///< the same in the strongest bursts
        std::uint64_t longest = 50'000;  ///< messages of the longest burst
    };

    Traffic(std::uint16_t port, unsigned seed, Rates rates);
    ~Traffic();
    Traffic(const Traffic &) = delete;
    Traffic &operator=(const Traffic &) = delete;

    /// Begins with it, or stops within a moment; nothing is sent at first.
    void setOn(bool on);
    /// Whether something is being sent, or soon will be.
    [[nodiscard]] bool isBusy() const { return m_isOn || m_isSending; }
    /// How many messages the kernel took so far.
    [[nodiscard]] std::uint64_t sent() const { return m_sent; }

private:
    void work();
    void calm();
    void burst();
    void send(load::Plan plan);
    [[nodiscard]] load::Plan plan(std::uint64_t perSecond, std::uint64_t count);
    std::uint64_t any(std::uint64_t from, std::uint64_t to);

    const std::uint16_t m_port;
    const Rates m_rates;
    std::mt19937 m_random;  // of the thread
    std::uint64_t m_runs = 0;
    std::atomic<bool> m_isOn = false;
    std::atomic<bool> m_isSending = false;
    std::atomic<bool> m_pause = true;  // ends what is being sent
    std::atomic<bool> m_stop = false;
    std::atomic<std::uint64_t> m_sent = 0;
    std::thread m_thread;
};

}  // namespace quorbel::soak
