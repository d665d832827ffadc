#pragma once

#include "platform/UniqueFd.h"

#include <cstdint>

namespace quorbel {

class LogStore;

/// Wakes a thread that reads the log files when there is something new in them. It costs whoever
/// stores next to nothing while the reader does not sleep.
///
/// The reader calls clear(), looks, and if there was nothing, arm(); when that returns true, it
/// waits until fd() is readable.
class AppendWaker {
public:
    /// `store` must outlive the object. Throws std::system_error when there is no descriptor left.
    explicit AppendWaker(LogStore &store);
    ~AppendWaker();
    AppendWaker(const AppendWaker &) = delete;
    AppendWaker &operator=(const AppendWaker &) = delete;

    /// An eventfd: readable when something was stored after arm(), or after wake().
    [[nodiscard]] int fd() const { return m_signal.get(); }
    /// False when something was stored since clear().
    bool arm();
    void clear();
    /// Any thread.
    void wake();

private:
    friend class LogStore;

    LogStore &m_store;
    const UniqueFd m_signal;
    std::uint64_t m_seen = 0;
    bool m_armed = false;  ///< under the store's m_readersMutex
};

}  // namespace quorbel
