#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// Events that are wanted, that are listed beside them, and that the log has: of those that differ
/// in nothing but the second of their minute, how many of which second. A million of them take some
/// fifty bytes each.
class AlikeEvents {
public:
    /// Seconds since 1970 are from 0 up to this: the end of the year 9999.
    static constexpr std::int64_t kLatestTime = 253'402'300'799;

    /// One of those that were wanted or listed.
    struct Event {
        std::uint32_t alike;  ///< a number that stands for its minute and its fields
        std::uint32_t second;
    };

    /// Room for so many that are wanted.
    explicit AlikeEvents(std::size_t wanted);

    /// `fields` are all but the time. They are kept, and outlive this.
    Event want(std::int64_t seconds, std::string_view fields);
    /// Nothing, and nothing counted, when none is wanted that is alike.
    std::optional<Event> list(std::int64_t seconds, std::string_view fields);
    void countInLog(std::int64_t seconds, std::string_view fields);
    /// Whether it is to be put into the log: asked once of each. No more than are wanted, nor so
    /// many that the log has more than are wanted and listed, and none whose second it has.
    [[nodiscard]] bool choose(Event event);
    /// To be called when all are chosen, for the memory.
    void forgetCounts();

    [[nodiscard]] std::int64_t seconds(Event event) const {
        return std::int64_t{kMinute} * m_alike[event.alike].minute + event.second;
    }
    [[nodiscard]] std::string_view fields(Event event) const {
        return {m_alike[event.alike].fields, m_alike[event.alike].size};
    }

private:
    static constexpr std::uint32_t kMinute = 60;
    static constexpr std::uint32_t kNone = UINT32_MAX;

    struct Alike {
        const char *fields;
        std::uint32_t size;
        std::uint32_t minute;
        std::uint32_t hash;
        std::uint32_t wanted = 0;
        std::uint32_t room = 0;  ///< for so many in the log, beside those that are there
        std::uint32_t seconds = kNone;
    };
    /// Of those that are alike, those of one second.
    struct OfSecond {
        std::uint32_t second;
        std::uint32_t lacking = 0;  ///< in the log
        std::uint32_t next;
    };
    struct Key {
        std::uint32_t minute;
        std::uint32_t hash;
        std::string_view fields;
    };

    [[nodiscard]] static Key keyOf(std::int64_t seconds, std::string_view fields);
    /// Where it stands in the table, or would.
    [[nodiscard]] std::size_t slotOf(const Key &key) const;
    [[nodiscard]] OfSecond *ofSecond(const Alike &alike, std::uint32_t second);
    Event add(std::uint32_t number, std::int64_t seconds);

    std::vector<Alike> m_alike;
    std::vector<OfSecond> m_seconds;
    std::vector<std::uint32_t> m_table;  // numbers of m_alike, by hash; a power of two of slots
};

}  // namespace quorbel
