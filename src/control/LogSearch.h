#pragma once

#include "common/LogReader.h"
#include "core/AppState.h"
#include "core/EventList.h"
#include "core/EventMatcher.h"
#include "core/EventQuery.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Finds what a filter means among lines of log files, in their order, with the event list and the
/// matcher of the window. Holds no more than some thousand of them at a time, however many there
/// are.
class LogSearch {
public:
    /// Called with each event that is meant and its rating; the views last as long as the call.
    /// Returning false ends the search.
    using Handler = std::function<bool(const LogLine &event, EventRating rating)>;

    /// `state` says how the window would show events. `filter` is as queryAt() gives it, and its
    /// expressions are good.
    LogSearch(AppState state, const EventQuery &filter, Handler onFound);

    /// Takes one more; it is judged with others, some time before finish() returns. False once the
    /// handler has ended the search.
    bool add(const LogLine &line);
    /// Judges what was not yet. False as add().
    bool finish();

private:
    /// A line among the bytes that are held.
    struct Held {
        std::size_t begin;
        std::uint16_t date;  ///< these are lengths
        std::uint16_t priority;
        std::uint16_t host;
        std::uint16_t message;
    };

    [[nodiscard]] LogLine lineOf(const Held &held) const;
    void list();
    void match();
    bool tell();
    void clear();

    AppState m_state;
    EventList m_list;
    EventReader m_reader{m_list};
    EventMatcher m_matcher;
    Handler m_onFound;
    bool m_hasEnded = false;
    std::string m_bytes;
    std::vector<Held> m_held;
    EventId m_first = 0;                  // of the events that are held
    EventMatcher::Positions m_positions;  // kept for their memory, as are the matches
    std::vector<EventMatch> m_matches;
};

/// Whether a log file may hold events of the filter's span of time, by the day in its name. The
/// service's calendar may be another one than this user's, so there are some days of doubt.
bool mayHoldSpan(const std::filesystem::path &file, const EventQuery &filter);

}  // namespace quorbel
