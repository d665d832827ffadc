#pragma once

#include "core/EventQuery.h"
#include "core/EventReader.h"
#include "core/HostPattern.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {

/// An event that a filter means, and how it was rated then. Later events are greater.
class EventMatch {
public:
    EventMatch(EventId id, EventRating rating) : m_bits(id << 2U | rating) {}
    [[nodiscard]] EventId id() const { return m_bits >> 2U; }
    [[nodiscard]] EventRating rating() const { return static_cast<EventRating>(m_bits & 3U); }
    auto operator<=>(const EventMatch &) const = default;

private:
    std::uint64_t m_bits;
};

/// Tells which events of a list meet all conditions of a filter but the one on their rating, which
/// is left to who counts them by it.
///
/// Texts that many events share are looked at once. Main thread only.
class EventMatcher {
public:
    /// The list outlives the matcher.
    EventMatcher(EventList &list, EventQuery filter);

    [[nodiscard]] const EventQuery &filter() const { return m_filter; }
    /// What is wrong with one of the filter's expressions, in English; empty when nothing is. Such
    /// a filter must not be matched.
    [[nodiscard]] const std::string &error() const { return m_error; }

    static constexpr std::size_t kMostRecords = 1024;
    /// Where to end a run of at most so many records that begins at `first`, so that it does not
    /// hold more bytes than can be searched in a fraction of a slice; it has one record at least.
    static std::size_t endOfRun(const EventChunk &chunk, std::size_t first, std::size_t most);
    /// Appends what matches among the records of a chunk from `first` up to `last`.
    void match(EventChunk &chunk, std::size_t first, std::size_t last,
               std::vector<EventMatch> &matches);
    /// Forgets what it knows of shared texts. To be called whenever events have left the list.
    void forgetTexts();

private:
    enum class Known : std::uint8_t { kNot, kNo, kYes };
    /// What was found in the texts that many events share, by their numbers.
    class Shared {
    public:
        template <typename Test>
        bool test(StringTable::Id id, Test test) {
            if (m_known.size() <= id) {
                m_known.resize(id + 1);
            }
            if (m_known[id] == Known::kNot) {
                m_known[id] = test() ? Known::kYes : Known::kNo;
            }
            return m_known[id] == Known::kYes;
        }
        void clear() { m_known.clear(); }

    private:
        std::vector<Known> m_known;
    };
    struct LastDate {
        std::uint8_t format = EventRecord::kTextDate;
        std::int64_t seconds = 0;
        bool isIn = false;
    };
    struct Text {
        TextPattern pattern;
        TextPattern::Spec spec;
        bool isNegated;
        std::array<bool, kRatingCount> isInRating{};
        Shared priorities{};
        Shared hosts{};
        std::vector<Known> mayBeInDates{};  // by format
        LastDate lastDate{};
    };
    /// Records of a chunk that are judged together, and which of them are still meant.
    struct Run {
        EventChunk &chunk;
        std::size_t first;
        std::vector<bool> &isMeant;
        [[nodiscard]] std::size_t size() const { return isMeant.size(); }
    };

    void applyFields(Run &run);
    [[nodiscard]] bool meetsFields(const EventRecord &record);
    [[nodiscard]] bool meetsPriority(StringTable::Id id) const;
    void applyText(Run &run, Text &text);
    [[nodiscard]] bool isInMessage(const Run &run, std::size_t number, const Text &text) const;
    void findInMessages(const Run &run, const Text &text);
    [[nodiscard]] bool isInOthers(const Run &run, std::size_t number, Text &text);
    [[nodiscard]] bool isInDate(const Run &run, std::size_t number, Text &text);
    [[nodiscard]] bool mayBeInDate(const EventRecord &record, Text &text) const;

    EventReader m_events;
    EventQuery m_filter;
    std::string m_error;
    HostPattern m_host;
    std::vector<Text> m_texts;
    Shared m_priorities;
    Shared m_hosts;
    std::vector<bool> m_isMeant;  // kept for its memory, as the next one
    std::vector<bool> m_isFound;
};

}  // namespace quorbel
