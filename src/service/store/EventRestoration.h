#pragma once

#include "platform/ArchivedLists.h"
#include "platform/Value.h"
#include "service/store/AlikeEvents.h"
#include "service/store/LogStore.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
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
    /// The same of the first two arrays of a command, where they stand. Nothing when not all of
    /// them are texts. `giveBack` is called now and then: the memory of what stands there may be
    /// given up until it is looked at again. The arrays outlive the restoration.
    static std::optional<EventRestoration> of(ArchivedLists &lists, std::function<void()> giveBack);

    /// Reads each log file once, and rewrites those that get some of the events. Returns what could
    /// not be put back and why, as one line; nothing when all is there. Gives up soon after `stop`
    /// was set; what was put back by then stays.
    std::optional<std::string> run(LogStore &store, const std::atomic<bool> &stop);

private:
    using Event = AlikeEvents::Event;
    using Events = std::vector<Event>;
    using ManyEvents = std::span<const Event>;
    /// A line taken apart.
    struct Line {
        std::int64_t seconds;
        std::string_view fields;  ///< ",priority,host,message"
    };

    EventRestoration(std::size_t named, std::function<void()> giveBack);

    [[nodiscard]] static std::optional<Line> lineOf(std::string_view text);
    void want(std::string_view text);
    void list(std::string_view text);
    void noteRead(std::size_t bytes);
    void countLog(LogStore &store, const std::atomic<bool> &stop);
    void countLine(std::string_view piece);
    [[nodiscard]] Events choose();
    bool putInto(LogStore &store, const std::string &name, ManyEvents events,
                 const std::atomic<bool> &stop) REQUIRES(store.editLock());
    [[nodiscard]] std::optional<std::vector<Insertion>> placesFor(ManyEvents events, int fd,
                                                                  std::uint64_t size,
                                                                  const std::atomic<bool> &stop);
    [[nodiscard]] std::string textOf(ManyEvents events, std::string_view front = {});
    void fail(std::size_t count, const std::string &problem);
    void note(const std::string &problem);

    std::function<void()> m_giveBack;
    std::size_t m_read = 0;  ///< of the lines, since m_giveBack was called
    AlikeEvents m_alike;
    Events m_events;
    Events m_listed;
    std::size_t m_named = 0;
    std::size_t m_failed = 0;
    std::string m_problem;

    std::string m_fields;  ///< of countLine(), kept so that a line costs no allocation
};

}  // namespace quorbel
