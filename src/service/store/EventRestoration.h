#pragma once

#include "platform/Value.h"
#include "service/store/LogStore.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorbel {

/// Puts events that the user deleted back into the log files.
///
/// Each is a line "seconds,priority,host,message\n", and goes into the file of its day: behind all
/// events of up to its second that stand there in order, and before the first later one.
///
/// What is in the log is not put there again: a deletion may have failed, and a command may come
/// twice. A deletion says no more of an event's time than the front-end shows, which may be the
/// minute, and so may have taken out another event of the same minute that reads the same. Events
/// that differ in nothing but their second of a minute are therefore counted together: no more of
/// them are put back than are asked for, and not so many that the log would hold more of them than
/// the front-end lists; first those whose second the log lacks.
class EventRestoration {
public:
    /// Takes the events to put back, the oldest first, and those that the front-end lists beside
    /// them and that differ in nothing but the second. Of both, views are kept. What is no such
    /// line is never put back.
    EventRestoration(const Array &events, const Array &listed);

    /// Reads each log file once, and rewrites those that get some of the events. Returns what could
    /// not be put back and why, as one line; nothing when all is there. Gives up soon after `stop`
    /// was set; what was put back by then stays.
    std::optional<std::string> run(LogStore &store, const std::atomic<bool> &stop);

private:
    struct Event {
        std::int64_t seconds;
        std::string_view fields;  ///< ",priority,host,message"
    };
    /// Events of one moment or minute with the same fields.
    struct Key {
        std::int64_t time;
        std::string_view fields;
        bool operator==(const Key &) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key &key) const;
    };
    struct Alike {
        std::size_t wanted = 0;
        std::size_t listed = 0;  ///< beside those
        std::size_t inLog = 0;
        std::size_t chosen = 0;  ///< to be put back
        [[nodiscard]] std::size_t lacking() const;
    };
    using Events = std::vector<Event>;

    [[nodiscard]] static Events take(const Array &lines);
    [[nodiscard]] static std::optional<Event> eventOf(const Value &value);
    [[nodiscard]] static std::string lineOf(const Event &event);
    [[nodiscard]] Alike &alikeTo(const Event &event);
    void countLog(LogStore &store, const std::atomic<bool> &stop);
    void countLine(std::string_view piece);
    [[nodiscard]] Events choose();
    static bool putInto(LogStore &store, const std::string &name, const Events &events,
                        const std::atomic<bool> &stop) REQUIRES(store.editLock());
    [[nodiscard]] static std::optional<std::vector<Insertion>> placesFor(
        const Events &events, int fd, std::uint64_t size, const std::atomic<bool> &stop);
    void fail(std::size_t count, const std::string &problem);
    void note(const std::string &problem);

    Events m_events;
    Events m_listed;
    std::size_t m_named = 0;
    std::size_t m_invalid = 0;
    std::size_t m_failed = 0;
    std::string m_problem;
    std::unordered_map<Key, Alike, KeyHash> m_byMinute;
    std::unordered_map<Key, std::size_t, KeyHash> m_lacking;  ///< by second, in the log

    std::string m_fields;  ///< of countLine(), kept so that a line costs no allocation
};

}  // namespace quorbel
