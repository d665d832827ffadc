#include "common/LogTail.h"
#include "control/Commands.h"
#include "control/EventArguments.h"
#include "control/FollowWait.h"
#include "control/LogFolder.h"
#include "control/LogFollower.h"
#include "control/LogSearch.h"
#include "control/Output.h"
#include "core/StartSettings.h"
#include "platform/Files.h"
#include "platform/Number.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace quorbel {

namespace {

struct TailArguments {
    EventArguments events;
    std::size_t count = 10;
    bool follows = false;
};

/// The last events that a filter means, as they are written, found from the end on.
class LastEvents {
public:
    LastEvents(const TailArguments &arguments, const AppState &state)
        : m_most(arguments.count),
          m_form(arguments.events.form),
          m_search(state, arguments.events.query, [this](const LogLine &event, EventRating rating) {
              take(event, rating);
              return true;
          }) {}

    [[nodiscard]] bool haveAll() const { return m_lines.size() >= m_most; }
    [[nodiscard]] const std::deque<std::string> &lines() const { return m_lines; }

    /// Looks at what stands in front of all that was looked at before.
    void addBefore(int fd, std::uint64_t end) {
        while (end > 0 && !haveAll()) {
            const std::uint64_t begin = partBefore(fd, end);
            readLines(fd, begin, end, [this](const LogLine &line) { return m_search.add(line); });
            m_search.finish();
            putInFront();
            end = begin;
        }
    }

private:
    void take(const LogLine &event, EventRating rating) {
        std::string line;
        appendEvent(line, event, rating, m_form);
        m_part.push_back(std::move(line));
        if (m_part.size() + m_lines.size() > m_most) {
            m_part.pop_front();
        }
    }
    void putInFront() {
        m_lines.insert(m_lines.begin(), std::make_move_iterator(m_part.begin()),
                       std::make_move_iterator(m_part.end()));
        m_part.clear();
    }

    std::size_t m_most;
    EventForm m_form;
    std::deque<std::string> m_part;
    std::deque<std::string> m_lines;
    LogSearch m_search;
};

std::optional<TailArguments> readTailArguments(int count, char **values) {
    TailArguments arguments;
    const std::vector<Option> own{
        flag("follow", 'f', arguments.follows),
        {"lines", 'n', true, [&arguments](std::string_view value) -> std::string {
             const auto number = readNumber<std::size_t>(value);
             arguments.count = number.value_or(0);
             return number ? "" : "\"" + std::string(value) + "\" is no number";
         }}};
    auto events = readEventArguments(count, values, own);
    if (!events) {
        return std::nullopt;
    }
    arguments.events = std::move(*events);
    return arguments;
}

using Ends = std::map<std::string, std::uint64_t>;

/// How much there is of each file, the oldest first.
Ends sizesOf(const std::vector<std::filesystem::path> &files) {
    Ends sizes;
    for (const auto &file : files) {
        sizes[file.filename().string()] = totalSize({file});
    }
    return sizes;
}

/// False when a file could not be read. A file that `follower` has open may have another one under
/// its name by now.
bool findLast(LastEvents &last, const EventQuery &query, const Ends &ends,
              const LogFollower *follower) {
    LogOpener opener;
    for (auto one = ends.rbegin(); one != ends.rend(); ++one) {
        const auto &[name, end] = *one;
        const auto file = libraryFolder() / name;
        if (last.haveAll() || !mayHoldSpan(file, query)) {
            continue;
        }
        const int held = follower != nullptr ? follower->sourceOf(name) : -1;
        const UniqueFd source = held < 0 ? opener.open(file) : UniqueFd();
        if (held >= 0 || source.isOpen()) {
            last.addBefore(held >= 0 ? held : source.get(), end);
        }
    }
    return opener.couldAll();
}

/// False when a file could not be read.
bool writeLast(const TailArguments &arguments, const AppState &state, const Ends &ends,
               const LogFollower *follower, Output &output, bool &hasFound) {
    LastEvents last(arguments, state);
    const bool couldRead = findLast(last, arguments.events.query, ends, follower);
    hasFound = !last.lines().empty();
    for (const std::string &line : last.lines()) {
        output.text() += line;
        output.endPiece();
    }
    output.flush();
    return couldRead;
}

/// Until somebody ends it, or nobody reads on.
ExitCode follow(const TailArguments &arguments, const AppState &state, LogFollower &follower,
                Output &output, FollowWait &wait) {
    LogSearch search(state, arguments.events.query, [&](const LogLine &event, EventRating rating) {
        appendEvent(output.text(), event, rating, arguments.events.form);
        return output.endPiece();
    });
    while (!output.isGone() && wait.untilReadable(follower.fd())) {
        follower.read([&search](const LogLine &line) { return search.add(line); });
        search.finish();
        output.flush();
        if (!follower.isWatching()) {
            complain(libraryFolder().string() + " is gone");
            return ExitCode::kNotThere;
        }
    }
    return finishOutput(output, ExitCode::kDone);
}

ExitCode tailAndFollow(const TailArguments &arguments, const AppState &state) {
    FollowWait wait;
    LogFollower follower(libraryFolder());
    if (!follower.isWatching()) {
        return complainOfFolder(follower.error());
    }
    Output output([&wait] { return wait.isOver(); });
    bool hasFound = false;
    if (!writeLast(arguments, state, follower.known(), &follower, output, hasFound)) {
        return ExitCode::kNotAllowed;
    }
    return follow(arguments, state, follower, output, wait);
}

}  // namespace

ExitCode runTail(int count, char **values) {
    const auto arguments = readTailArguments(count, values);
    if (!arguments) {
        return ExitCode::kUsage;
    }
    const auto files = filesOfService();
    if (const auto *problem = std::get_if<ExitCode>(&files)) {
        return *problem;
    }
    AppState state;
    takeStartSettings(state);
    if (arguments->follows) {
        return tailAndFollow(*arguments, state);
    }
    Output output;
    bool hasFound = false;
    const bool couldRead =
        writeLast(*arguments, state, sizesOf(std::get<0>(files)), nullptr, output, hasFound);
    return finishOutput(output, couldRead ? hasFound ? ExitCode::kDone : ExitCode::kNothing
                                          : ExitCode::kNotAllowed);
}

}  // namespace quorbel
