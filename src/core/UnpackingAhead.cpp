#include "core/UnpackingAhead.h"

#include <algorithm>
#include <utility>

namespace quorbel {

UnpackingAhead::~UnpackingAhead() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    m_wake.notifyAll();
    m_thread.join();
}

void UnpackingAhead::begin(const std::shared_ptr<const PackedBytes> &packed, MessageBytes &room) {
    {
        const MutexLock lock(m_mutex);
        if (std::ranges::any_of(m_works,
                                [&](const auto &work) { return work->packed == packed; })) {
            return;
        }
        if (m_works.size() == kMost) {
            m_works.pop_front();
        }
        m_works.push_back(std::make_shared<Work>(Work{packed, std::exchange(room, {})}));
    }
    m_wake.notifyOne();
    if (!m_thread.joinable()) {
        m_thread = std::thread([this] { work(); });
    }
}

std::optional<MessageBytes> UnpackingAhead::take(const PackedBytes &packed) {
    const MutexLock lock(m_mutex);
    const auto found = std::ranges::find_if(
        m_works, [&](const auto &work) { return work->packed.get() == &packed; });
    if (found == m_works.end()) {
        return std::nullopt;
    }
    const std::shared_ptr<Work> work = *found;
    m_works.erase(found);
    if (work->state != State::kDone) {
        return std::nullopt;
    }
    return std::move(work->bytes);
}

void UnpackingAhead::work() {
    MutexLock lock(m_mutex);
    while (!m_stop) {
        const auto next = std::ranges::find(m_works, State::kWaiting,
                                            [](const auto &work) { return work->state; });
        if (next == m_works.end()) {
            m_wake.wait(lock);
            continue;
        }
        const std::shared_ptr<Work> work = *next;
        work->state = State::kUnderWay;
        lock.unlock();
        work->packed->unpackInto(work->bytes);
        lock.lock();
        work->state = State::kDone;
    }
}

}  // namespace quorbel
