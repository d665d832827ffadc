#include "core/MessagePacking.h"

#include <sys/resource.h>

#include <utility>

namespace quorbel {

namespace {

constexpr int kLeastUrgent = 19;

}  // namespace

MessagePacking::~MessagePacking() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
        m_toDo.clear();
    }
    m_wake.notifyAll();
    m_thread.join();
}

bool MessagePacking::step() {
    putIntoPlace();
    handOn();
    return !m_underWay.empty();
}

void MessagePacking::putIntoPlace() {
    std::vector<Messages> done;
    {
        const MutexLock lock(m_mutex);
        done = std::exchange(m_done, {});
    }
    for (Messages &messages : done) {
        m_underWay.erase(messages.chunk);
        const std::size_t number = m_reader.chunkFrom(messages.chunk);
        if (number < m_reader.chunkCount()) {
            m_list.pack(m_reader.chunk(number), messages.bytes, std::move(messages.packed));
        }
    }
}

void MessagePacking::handOn() {
    std::vector<Messages> next;
    for (std::size_t number = 0;
         number + kHotChunks < m_reader.chunkCount() && m_underWay.size() < kMostUnderWay;
         ++number) {
        const EventChunk &chunk = m_reader.chunk(number);
        if (chunk.isToBePacked() && m_underWay.insert(chunk.first()).second) {
            next.push_back({chunk.first(), chunk.bytesToPack(), std::nullopt});
        }
    }
    if (next.empty()) {
        return;
    }
    {
        const MutexLock lock(m_mutex);
        m_toDo.insert(m_toDo.end(), std::make_move_iterator(next.begin()),
                      std::make_move_iterator(next.end()));
    }
    m_wake.notifyOne();
    if (!m_thread.joinable()) {
        m_thread = std::thread([this] { work(); });
    }
}

void MessagePacking::work() {
    // Of this thread alone.
    ::setpriority(PRIO_PROCESS, 0, kLeastUrgent);
    MutexLock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this]() REQUIRES(m_mutex) { return m_stop || !m_toDo.empty(); });
        if (m_stop) {
            return;
        }
        Messages messages = std::move(m_toDo.back());
        m_toDo.pop_back();
        lock.unlock();
        messages.packed = PackedBytes::pack(*messages.bytes);
        lock.lock();
        m_done.push_back(std::move(messages));
    }
}

}  // namespace quorbel
