#pragma once

#include "platform/Mutex.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorbel {

/// What became of the settings that were sent to the service last. Safe to use from any thread.
class LastSave {
public:
    /// Settings are on their way; returns their number, by which end() knows them.
    std::uint64_t begin();
    /// The service's reply to them; nothing when none will come.
    void end(std::uint64_t number, const std::optional<std::string> &reply);

    /// What is wrong with the last ones that were answered: the reply, or an empty text for none.
    /// Nothing when the service took them.
    [[nodiscard]] std::optional<std::string> problem() const;

private:
    mutable Mutex m_mutex;
    std::uint64_t m_begun GUARDED_BY(m_mutex) = 0;
    std::uint64_t m_ended GUARDED_BY(m_mutex) = 0;
    std::optional<std::string> m_problem GUARDED_BY(m_mutex);
};

}  // namespace quorbel
