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

/// Whether a text may be part of a date that is rendered in a format of the settings.
bool mayBeInDates(const TextPattern &pattern, std::string_view setting);

/// Tells which events of a list meet all conditions of a filter but the one on their rating, which
/// is left to who counts them by it.
///
/// Texts that many events share are looked at once, their messages as one run of bytes. Main thread
/// only.
class EventMatcher {
public:
    /// The list outlives the matcher.
    EventMatcher(EventList &list, EventQuery filter);

    [[nodiscard]] const EventQuery &filter() const { return m_filter; }
    /// What is wrong with one of the filter's expressions, in English; empty when nothing is. Such
    /// a filter must not be matched.
    [[nodiscard]] const std::string &error() const { return m_error; }

    /// Positions in a chunk, ascending.
    using Positions = std::vector<std::uint32_t>;

    /// Has other processors look at the messages of a chunk that will be matched soon.
    void foresee(EventChunk &chunk);
    /// False when no event of the chunk is meant.
    [[nodiscard]] bool mayBeIn(const EventChunk &chunk) const;
    /// Appends those that match among the events at some positions of a chunk, and leaves the
    /// positions of these.
    void match(EventChunk &chunk, Positions &positions, std::vector<EventMatch> &matches);
    /// The same for all positions from `first` up to `last`; `positions` are written over.
    void matchAll(EventChunk &chunk, std::size_t first, std::size_t last, Positions &positions,
                  std::vector<EventMatch> &matches);
    /// Whether a single event matches.
    [[nodiscard]] bool matches(EventChunk &chunk, std::uint32_t position);
    /// Forgets what it knows of shared texts. To be called whenever events have left the list.
    void forgetTexts();

private:
    using Answer = LiteralSearch::Answer;
    enum class Known : std::uint8_t { kNot, kNo, kYes };
    /// What was found in the texts that many events share, by their numbers.
    class Shared {
    public:
        /// `limit` is one more than the largest number to be tested.
        void makeRoom(std::size_t limit) {
            if (m_known.size() < limit) {
                m_known.resize(limit + limit / 2);
            }
        }
        template <typename Test>
        bool test(StringTable::Id id, Test test) {
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
        bool isNegated;
        std::array<bool, kRatingCount> isInRating{};
        Shared priorities{};
        Shared hosts{};
        std::array<Known, EventRecord::kTextDate + 1> mayBeInDates{};  // by format
        LastDate lastDate{};
        bool wasElsewhere = false;  // in something else than a message
    };

    void makeRoom();
    [[nodiscard]] bool readsMessages(const EventChunk &chunk) const;
    [[nodiscard]] bool isInTime(const EventRecord &record) const;
    [[nodiscard]] bool meetsPriority(const EventRecord &record);
    [[nodiscard]] bool meetsHost(const EventRecord &record);
    [[nodiscard]] bool choosesTime() const { return m_filter.from || m_filter.until; }
    [[nodiscard]] bool choosesPriority() const {
        return m_filter.leastSeverity || m_filter.classes.any() || !m_filter.facility.empty();
    }
    [[nodiscard]] bool choosesFields() const {
        return choosesTime() || choosesPriority() || !m_filter.host.empty();
    }
    [[nodiscard]] std::optional<MessageRun::Places> placesMeant(const EventChunk &chunk);
    [[nodiscard]] bool isPriorityMeant(StringTable::Id id) const;
    void applyFields(const EventChunk &chunk, Positions &positions);
    void applyText(EventChunk &chunk, Positions &positions, Text &text);
    void findInMessages(const EventChunk &chunk, const Positions &positions, const Text &text);
    void takeAnswers(const TextSearch::Found &found, const Text &text);
    [[nodiscard]] bool isElsewhere(EventChunk &chunk, std::uint32_t position, Text &text);
    [[nodiscard]] bool isInOthers(EventChunk &chunk, std::uint32_t position, Text &text);
    [[nodiscard]] bool isInDate(EventChunk &chunk, std::uint32_t position, Text &text);
    [[nodiscard]] bool mayBeInDate(const EventRecord &record, Text &text) const;

    EventReader m_events;
    EventQuery m_filter;
    std::string m_error;
    HostPattern m_host;
    std::vector<Text> m_texts;
    Shared m_priorities;
    Shared m_hosts;
    std::unique_ptr<TextsAhead> m_ahead;  // from the first chunk on that is looked at ahead
    MessageRun::Places m_places;          // of the messages looked at; kept for its memory
    std::vector<Answer> m_answers;        // of these; kept for its memory
};

}  // namespace quorbel
