#pragma once

#include "core/EventQuery.h"
#include "core/MessageRun.h"
#include "core/PackedBytes.h"
#include "platform/Mutex.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quorbel {

/// Looks for the texts of a filter in the messages of packed chunks. Any thread, several at once.
class TextSearch {
public:
    using Answer = MessageRun::Answer;

    /// What is to be looked at.
    struct Request {
        std::shared_ptr<const PackedBytes> packed;
        /// Which of the messages; nothing for all.
        std::optional<MessageRun::Places> places;
        /// By text: whether it is probably in something else of many events. Where it is not, the
        /// next ones are looked for only in messages that have it.
        std::vector<bool> isElsewhere;
    };
    /// What was found.
    struct Found {
        MessageRun::Places places;                 ///< of the messages that were looked at
        std::vector<std::vector<Answer>> answers;  ///< by text; kUnsure where it was not looked for
    };

    explicit TextSearch(std::vector<TextCondition> texts) : m_texts(std::move(texts)) {}

    /// Nothing once it is unwanted. The messages are unpacked into `room`.
    [[nodiscard]] std::optional<Found> search(const Request &request, MessageBytes &room,
                                              const std::atomic<bool> &isUnwanted);

private:
    /// Those of all texts, for one thread at a time.
    using Patterns = std::vector<TextPattern>;

    [[nodiscard]] std::unique_ptr<Patterns> takePatterns();
    void giveBack(std::unique_ptr<Patterns> patterns);

    std::vector<TextCondition> m_texts;
    Mutex m_mutex;
    std::vector<std::unique_ptr<Patterns>> m_idle GUARDED_BY(m_mutex);
};

}  // namespace quorbel
