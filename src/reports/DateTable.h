#pragma once

#include "core/HashIndex.h"
#include "reports/DateTexts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// Numbers distinct dates, as they are shown, in the order in which they were first seen, from 0.
/// Of each it holds one moment and no text.
///
/// A text above all earlier ones is new without a look into the index, which is therefore not even
/// built while dates come in their order, as in a log, and are shown with the year in front.
class DateTable {
public:
    /// `texts` renders the dates and outlives the table.
    explicit DateTable(DateTexts &texts) : m_texts(texts) {}

    /// Room for so many distinct dates; what is not needed is never touched.
    void reserve(std::size_t dates) { m_moments.reserve(dates); }

    /// Queues a moment, see TextTable::numberLater().
    template <typename Take>
    void numberLater(double seconds, Take take) {
        if (m_queue.size() == kMostQueued) {
            numberQueued(take);
        }
        m_queue.push_back(lookedAt(seconds));
    }
    /// Calls `take(number)` for those still queued.
    template <typename Take>
    void numberQueued(Take take) {
        for (const Queued &queued : m_queue) {
            take(number(queued));
        }
        m_queue.clear();
    }

    /// Returns all memory; no further date may come.
    void close();

private:
    static constexpr std::size_t kMostQueued = 32;

    enum class Order { kBelow, kGreatest, kNew };
    struct Queued {
        double seconds;
        Order order;       // beside the greatest text before it
        std::size_t hash;  // of one below
    };

    Queued lookedAt(double seconds);
    std::uint32_t number(const Queued &queued);
    std::uint32_t find(const Queued &queued);
    std::uint32_t add(double seconds);
    void completeIndex();
    bool areShownAlike(double one, double other);

    DateTexts &m_texts;
    std::vector<double> m_moments;  // the first of each date
    std::optional<std::string> m_greatest;
    std::uint32_t m_greatestNumber = 0;
    HashIndex m_index;
    std::size_t m_indexed = 0;  // how many dates are in it
    std::vector<Queued> m_queue;
    std::string m_scratch;
};

}  // namespace quorbel
