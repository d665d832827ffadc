#pragma once

#include "platform/Mutex.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// What came of something that the service does by itself, again and again: how often and when it
/// was done, how often and why it went wrong. What it holds does not grow. Safe to use from any
/// thread.
class LastResult {
public:
    /// Times are seconds since 1970, 0 for never; all counts begin with the object.
    struct Summary {
        std::uint64_t done = 0;
        std::int64_t doneSeconds = 0;  ///< of the last one
        std::uint64_t failed = 0;
        std::string problem;             ///< the last one, as legible() shows a text
        std::int64_t failedSeconds = 0;  ///< of the last one

        bool operator==(const Summary &) const = default;
    };

    void noteDone();
    void noteFailed(std::string_view problem);
    [[nodiscard]] Summary summary() const;

private:
    mutable Mutex m_mutex;
    Summary m_summary GUARDED_BY(m_mutex);
};

/// Of one of several things.
struct NamedResult {
    std::string name;
    LastResult::Summary summary;
};

}  // namespace quorbel
