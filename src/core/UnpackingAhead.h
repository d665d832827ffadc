#pragma once

#include "core/PackedBytes.h"
#include "platform/Mutex.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <thread>

namespace quorbel {

/// Unpacks on a thread of its own what will be looked at soon, while what is looked at now is. For
/// one other thread.
class UnpackingAhead {
public:
    /// How many are unpacked ahead; with more, the first ones are forgotten.
    static constexpr std::size_t kMost = 4;

    UnpackingAhead() = default;
    ~UnpackingAhead();
    UnpackingAhead(const UnpackingAhead &) = delete;
    UnpackingAhead &operator=(const UnpackingAhead &) = delete;

    /// Begins with these, unless it has already. Takes the memory of `room` for them.
    void begin(const std::shared_ptr<const PackedBytes> &packed, MessageBytes &room);
    /// What became of them. Nothing when they are not unpacked yet, and then they will not be: on a
    /// busy machine, waiting takes longer than unpacking them.
    [[nodiscard]] std::optional<MessageBytes> take(const PackedBytes &packed);

private:
    enum class State { kWaiting, kUnderWay, kDone };
    struct Work {
        std::shared_ptr<const PackedBytes> packed;
        MessageBytes bytes;
        State state = State::kWaiting;
    };
    /// In the order in which they were begun with.
    using Works = std::deque<std::shared_ptr<Work>>;

    void work();

    Mutex m_mutex;
    Condition m_wake;
    Works m_works GUARDED_BY(m_mutex);
    bool m_stop GUARDED_BY(m_mutex) = false;
    std::thread m_thread;  // from the first work on
};

}  // namespace quorbel
