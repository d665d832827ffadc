#include "core/SearchAhead.h"

#include "core/LogLoad.h"

#include <algorithm>
#include <ranges>
#include <system_error>
#include <utility>

namespace quorbel {

std::size_t SearchAhead::otherProcessors() {
    constexpr std::size_t kMostUseful = 7;  // the rest of the work is the main thread's
    return std::min(LogLoad::processors() - 1, kMostUseful);
}

SearchAhead::~SearchAhead() {
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
        for (const auto &work : m_works) {
            work->isUnwanted = true;
        }
    }
    m_wake.notifyAll();
    for (std::thread &thread : m_threads) {
        thread.join();
    }
}

void SearchAhead::begin(const std::shared_ptr<TextSearch> &search, TextSearch::Request request) {
    {
        const MutexLock lock(m_mutex);
        eraseFirst(*search);
        m_works.push_back(std::make_shared<Work>());
        m_works.back()->search = search;
        m_works.back()->request = std::move(request);
    }
    m_wake.notifyOne();
    if (m_threads.size() < m_mostThreads) {
        startThread();
    }
}

void SearchAhead::startThread() {
    try {
        m_threads.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        // Fewer do it as well, and without any the main thread does.
    }
}

/// Makes room for one more of a search.
void SearchAhead::eraseFirst(const TextSearch &search) {
    const auto isOfIt = [&search](const auto &work) { return work->search.get() == &search; };
    if (static_cast<std::size_t>(std::ranges::count_if(m_works, isOfIt)) < kMost) {
        return;
    }
    const auto first = std::ranges::find_if(m_works, isOfIt);
    (*first)->isUnwanted = true;
    m_works.erase(first);
}

std::optional<TextSearch::Found> SearchAhead::take(const TextSearch &search,
                                                   const PackedBytes &packed) {
    const MutexLock lock(m_mutex);
    const auto found = std::ranges::find_if(m_works, [&](const auto &work) {
        return work->search.get() == &search && work->request.packed.get() == &packed;
    });
    if (found == m_works.end()) {
        return std::nullopt;
    }
    const std::shared_ptr<Work> work = *found;
    m_works.erase(found);
    work->isUnwanted = true;
    return work->state == State::kDone ? std::move(work->found) : std::nullopt;
}

void SearchAhead::forget(const TextSearch &search) {
    const MutexLock lock(m_mutex);
    std::erase_if(m_works, [&search](const auto &work) {
        const bool isOfIt = work->search.get() == &search;
        work->isUnwanted = work->isUnwanted || isOfIt;
        return isOfIt;
    });
}

std::shared_ptr<SearchAhead::Work> SearchAhead::next() {
    const auto waiting = std::ranges::find(m_works.rbegin(), m_works.rend(), State::kWaiting,
                                           [](const auto &work) { return work->state; });
    return waiting == m_works.rend() ? nullptr : *waiting;
}

void SearchAhead::work() {
    MessageBytes room;
    MutexLock lock(m_mutex);
    while (!m_stop) {
        const std::shared_ptr<Work> work = next();
        if (!work) {
            m_wake.wait(lock);
            continue;
        }
        work->state = State::kUnderWay;
        lock.unlock();
        auto found = work->search->search(work->request, room, work->isUnwanted);
        lock.lock();
        work->found = std::move(found);
        work->state = State::kDone;
    }
}

const TextSearch::Found *TextsAhead::found(const std::shared_ptr<const PackedBytes> &packed) {
    if (m_packed != packed) {
        m_packed = packed;
        m_found = packed ? m_ahead.take(*m_search, *packed) : std::nullopt;
    }
    return m_found ? &*m_found : nullptr;
}

}  // namespace quorbel
