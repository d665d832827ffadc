#pragma once

#include "core/TextSearch.h"
#include "platform/Mutex.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel {

/// Searches on the other processors what the main thread will come to soon. The main thread never
/// waits for them: what is not done when it comes there, it does itself. What was asked for last is
/// done first, so that this is rare. For one other thread.
class SearchAhead {
public:
    /// How far a search is ahead; with more, the first ones are forgotten.
    static constexpr std::size_t kMost = 32;

    /// `threads` beside the one that asks.
    explicit SearchAhead(std::size_t threads = otherProcessors()) : m_mostThreads(threads) {}
    ~SearchAhead();
    SearchAhead(const SearchAhead &) = delete;
    SearchAhead &operator=(const SearchAhead &) = delete;

    /// Whether there is anybody to do it.
    [[nodiscard]] bool isOfUse() const { return m_mostThreads > 0; }
    void begin(const std::shared_ptr<TextSearch> &search, TextSearch::Request request);
    /// What was found in those messages. Nothing when that is not done, and then it will not be.
    [[nodiscard]] std::optional<TextSearch::Found> take(const TextSearch &search,
                                                        const PackedBytes &packed);
    /// What is left of a search is not wanted any more.
    void forget(const TextSearch &search);

private:
    enum class State { kWaiting, kUnderWay, kDone };
    struct Work {
        std::shared_ptr<TextSearch> search;
        TextSearch::Request request;
        std::optional<TextSearch::Found> found;
        State state = State::kWaiting;  // of m_mutex, as long as it is in m_works
        std::atomic<bool> isUnwanted = false;
    };
    /// In the order in which they were asked for.
    using Works = std::deque<std::shared_ptr<Work>>;

    static std::size_t otherProcessors();
    void startThread();
    void work();
    [[nodiscard]] std::shared_ptr<Work> next() REQUIRES(m_mutex);
    void eraseFirst(const TextSearch &search) REQUIRES(m_mutex);

    std::size_t m_mostThreads;
    Mutex m_mutex;
    Condition m_wake;
    Works m_works GUARDED_BY(m_mutex);
    bool m_stop GUARDED_BY(m_mutex) = false;
    std::vector<std::thread> m_threads;  // from the first work on
};

/// The texts of one search, looked for ahead of it. Used by the thread that searches.
class TextsAhead {
public:
    /// `ahead` outlives this.
    TextsAhead(SearchAhead &ahead, std::vector<TextCondition> texts)
        : m_ahead(ahead), m_search(std::make_shared<TextSearch>(std::move(texts))) {}
    ~TextsAhead() { m_ahead.forget(*m_search); }
    TextsAhead(const TextsAhead &) = delete;
    TextsAhead &operator=(const TextsAhead &) = delete;

    void begin(TextSearch::Request request) { m_ahead.begin(m_search, std::move(request)); }
    /// What was found in a chunk's messages, null when that is not known. Valid until those of
    /// another chunk are asked for.
    [[nodiscard]] const TextSearch::Found *found(const std::shared_ptr<const PackedBytes> &packed);

private:
    SearchAhead &m_ahead;
    std::shared_ptr<TextSearch> m_search;
    std::shared_ptr<const PackedBytes> m_packed;  // asked for last
    std::optional<TextSearch::Found> m_found;     // in them
};

}  // namespace quorbel
