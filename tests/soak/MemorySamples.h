#pragma once

#include "soak/Collector.h"
#include "soak/MemoryCurve.h"
#include "soak/ProcessFigures.h"
#include "support/WaitUntil.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace quorbel::soak {

/// Looks at the memory of both programs now and then, on a thread of its own.
class MemorySamples {
public:
    /// The collector outlives it.
    MemorySamples(const Collector &collector, std::chrono::milliseconds between)
        : m_thread([this, &collector, between] {
              while (!m_stop) {
                  window.add(figuresOf(getpid()).memory);
                  service.add(figuresOf(collector.pid()).memory);
                  testing::waitUntil([this] { return m_stop.load(); }, between);
              }
          }) {}
    ~MemorySamples() { finish(); }
    MemorySamples(const MemorySamples &) = delete;
    MemorySamples &operator=(const MemorySamples &) = delete;

    void finish() {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    // After finish().
    MemoryCurve window;
    MemoryCurve service;

private:
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};

}  // namespace quorbel::soak
