#pragma once

#include "core/EventReader.h"
#include "core/PackedMessages.h"
#include "platform/Mutex.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace quorbel {

/// Packs the messages of a list that nobody looks at: all but the newest few thousand, in the
/// background, by a thread of low priority. Whoever looks at them later finds them as they were.
///
/// Its owner calls step() now and then. Main thread only.
class MessagePacking {
public:
    /// How many of the newest chunks stay as they are.
    static constexpr std::size_t kHotChunks = 2;
    /// How many are with the thread at most.
    static constexpr std::size_t kMostUnderWay = 32;

    /// `list` outlives this.
    explicit MessagePacking(EventList &list) : m_list(list), m_reader(list) {}
    /// Waits for what is under way, some milliseconds.
    ~MessagePacking();
    MessagePacking(const MessagePacking &) = delete;
    MessagePacking &operator=(const MessagePacking &) = delete;

    /// Puts into place what was packed since it was called last, and hands on what is next. Whether
    /// something is under way.
    bool step();

private:
    /// The messages of a chunk, by its first id.
    struct Messages {
        EventId chunk;
        std::shared_ptr<const MessageBytes> bytes;
        std::optional<PackedBytes> packed;
    };

    void putIntoPlace();
    void handOn();
    void work();

    EventList &m_list;
    EventReader m_reader;
    std::set<EventId> m_underWay;

    Mutex m_mutex;
    Condition m_wake;
    std::vector<Messages> m_toDo GUARDED_BY(m_mutex);  // the next one last
    std::vector<Messages> m_done GUARDED_BY(m_mutex);
    bool m_stop GUARDED_BY(m_mutex) = false;
    std::thread m_thread;  // from the first work on
};

}  // namespace quorbel
