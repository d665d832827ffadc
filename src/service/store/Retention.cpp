#include "service/store/Retention.h"

#include "common/LogReader.h"
#include "common/Severity.h"
#include "platform/Number.h"
#include "service/base/Journal.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <limits>
#include <optional>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr const char *kClockFile = "Quorbel.clock";
constexpr std::chrono::minutes kInterval{1};
constexpr std::int64_t kIntervalSeconds = 60;
// The end of the year 9999; what claims to be later never was.
constexpr std::int64_t kLatestTime = 253'402'300'799;
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

/// The begin of the day after which a daily file is named.
std::optional<std::int64_t> dayOf(const std::string &name) {
    std::tm day{};
    const char *rest = ::strptime(name.c_str(), "%Y-%m-%d", &day);
    if (rest == nullptr || std::string_view(rest) != ".log") {
        return std::nullopt;
    }
    day.tm_isdst = -1;
    return std::mktime(&day);
}

/// A moment that nothing in the daily files is newer than, by their names.
std::optional<std::int64_t> newestIn(const std::vector<std::string> &names) {
    constexpr std::int64_t kDay = 24 * 3600;
    std::optional<std::int64_t> newest;
    for (const std::string &name : names) {
        if (const auto day = dayOf(name)) {
            newest = std::max(newest.value_or(*day), *day);
        }
    }
    return newest ? std::optional(*newest + kDay) : std::nullopt;
}

}  // namespace

Retention::Retention(LogStore &store, RemovalFeed &feed)
    : Retention(store, feed, readClocks, kInterval) {}

Retention::Retention(LogStore &store, RemovalFeed &feed, Now now,
                     std::chrono::milliseconds interval)
    : m_store(store),
      m_feed(feed),
      m_now(std::move(now)),
      m_interval(interval),
      m_clock(store.path(kClockFile)),
      m_thread([this] { work(); }) {}

Retention::~Retention() {
    stop();
    m_feed.close();
    m_thread.join();
}

void Retention::configure(const Dictionary &settings) {
    const RetentionRules rules(settings);
    const MutexLock lock(m_mutex);
    if (rules != m_wantedRules) {
        m_wantedRules = rules;
        m_rulesChanged = true;
        m_wake.notifyOne();
    }
}

void Retention::stop() {
    const MutexLock lock(m_mutex);
    m_stop = true;
    m_wake.notifyOne();
}

void Retention::work() {
    MutexLock lock(m_mutex);
    while (!m_stop) {
        if (std::exchange(m_rulesChanged, false)) {
            m_rules = m_wantedRules;
            m_known.clear();
        }
        lock.unlock();
        tendFiles(m_now());
        lock.lock();
        m_wake.waitFor(lock, m_interval,
                       [this]() REQUIRES(m_mutex) { return m_stop || m_rulesChanged; });
    }
}

void Retention::tendFiles(const ClockReading &clock) {
    const auto names = m_store.fileNames();
    // Asked for whatever the rules are: those of later need to know how the clock went on.
    const bool isBelieved = names && m_clock.believes(clock, newestIn(*names));
    if (m_rules.keepsAll()) {
        return;
    }
    if (!names) {
        note("The folder of the log files", "listed");
        return;
    }
    noteBelief(isBelieved);
    if (!isBelieved) {
        return;
    }
    const std::int64_t now = clock.time;
    // The clock was set back: what was found to be due, and when, was by the wrong time.
    if (now < std::exchange(m_lastPass, now)) {
        m_known.clear();
    }
    const auto isGone = [&names](const auto &file) {
        return !std::ranges::binary_search(*names, file.first);
    };
    std::erase_if(m_known, isGone);
    std::erase_if(m_problems, isGone);
    for (const std::string &name : *names) {
        if (m_stop) {
            return;
        }
        m_busy = true;
        tend(name, now);
        m_busy = false;
    }
}

/// Says it once, as long as it lasts.
void Retention::noteBelief(bool isBelieved) {
    constexpr std::int64_t kHour = 3600;
    if (m_waits != isBelieved) {
        return;
    }
    m_waits = !isBelieved;
    if (isBelieved) {
        say(JournalLevel::kNotice, "Old events are removed again: the clock is plausible now");
    } else {
        say(JournalLevel::kWarning,
            "Old events are kept: the clock is " + std::to_string(m_clock.ahead() / kHour) +
                " hours ahead of what is expected, and the system does not report it as "
                "synchronised. They will be removed once it is synchronised or set right, or has "
                "run on for a week");
    }
}

void Retention::tend(const std::string &name, std::int64_t now) {
    struct stat status {};
    if (::stat(m_store.path(name).c_str(), &status) != 0) {
        return;
    }
    Known known{status.st_dev, status.st_ino};
    const auto last = m_known.find(name);
    if (last == m_known.end()) {
        known.due = m_rules.firstEnd(oldestIn(name)).value_or(kNever);
        known.dueGrown = known.due;
    } else if (last->second.isSameFile(known)) {
        known = last->second;
    }
    const bool hasGrown = static_cast<std::uint64_t>(status.st_size) != known.size;
    if ((hasGrown ? known.dueGrown : known.due) > now || tendOpened(name, now, known)) {
        m_known[name] = known;
    }
}

/// False when the file is gone.
bool Retention::tendOpened(const std::string &name, std::int64_t now, Known &known) {
    // Something may be there when somebody has mended what went wrong.
    known.due = now + kIntervalSeconds;
    known.dueGrown = known.due;
    MutexLock lock(m_store.editLock());
    const UniqueFd file = openLogFile(m_store.path(name));
    Found found;
    if (!file.isOpen() || !search(file, m_rules.limitsAt(now), found)) {
        note(name, "read");
        return true;
    }
    if (m_stop || (found.count > 0 && !m_store.cutOut(name, file, found.expired, m_stop))) {
        note(name, "rewritten");
        return true;
    }
    struct stat status {};
    const bool isThere = ::stat(m_store.path(name).c_str(), &status) == 0;
    lock.unlock();
    // Events that are added from now on are newer than now. Those that arrived during the search
    // make the file larger than what was looked at.
    const std::int64_t due = nextDue(found);
    known = {status.st_dev, status.st_ino, found.size, due,
             std::min(due, m_rules.firstRemoval(now).value_or(kNever))};
    m_removed += found.count;
    m_problems.erase(name);
    tell(file, found);
    return isThere;
}

/// A moment that none of a file's events is older than, as far as can be said without reading it.
std::int64_t Retention::oldestIn(const std::string &name) const {
    std::optional<std::int64_t> first;
    LogReader::readFile(m_store.path(name), [&first](const LogLine &line) {
        first = readNumber<std::int64_t>(line.date);
        return false;
    });
    const auto day = dayOf(name);
    return day && first ? std::min(*day, *first) : 0;
}

bool Retention::search(const UniqueFd &file, const RetentionRules::Limits &limits, Found &found) {
    const std::uint64_t size = m_store.settledSize(file);
    found.size = size;
    bool atLineBegin = true;
    const auto look = [&](std::uint64_t offset, std::string_view piece) {
        const bool wasAtLineBegin = std::exchange(atLineBegin, piece.ends_with('\n'));
        const auto line = splitLogLine(piece);
        const auto time = line ? readNumber<std::int64_t>(line->date) : std::nullopt;
        if (!time || *time > kLatestTime) {
            return !m_stop;
        }
        const std::size_t severityClass = classOf(line->priority);
        const auto &limit = limits[severityClass];
        if (!limit) {
            return !m_stop;
        }
        if (*time > *limit) {
            auto &oldest = found.oldest[severityClass];
            oldest = std::min(oldest.value_or(*time), *time);
            return !m_stop;
        }
        const ByteRange range = removableRange(offset, piece, wasAtLineBegin);
        ++found.count;
        found.size -= range.end - range.begin;
        if (!found.expired.empty() && found.expired.back().end == range.begin) {
            found.expired.back().end = range.end;
        } else {
            found.expired.push_back(range);
        }
        return !m_stop;
    };
    return forEachPiece(file.get(), size, look);
}

/// When something of what was found and stays is to be removed.
std::int64_t Retention::nextDue(const Found &found) const {
    std::int64_t due = kNever;
    for (std::size_t i = 0; i < found.oldest.size(); ++i) {
        if (found.oldest[i]) {
            due = std::min(due,
                           m_rules.endOf(i, *found.oldest[i]).value_or(kNever) + m_rules.slack(i));
        }
    }
    return due;
}

/// Remembered, because an installation has some dozens of priorities.
std::size_t Retention::classOf(std::string_view priority) {
    constexpr std::size_t kMostRemembered = 10'000;
    m_priority = priority;
    const auto known = m_classes.find(m_priority);
    if (known != m_classes.end()) {
        return known->second;
    }
    if (m_classes.size() >= kMostRemembered) {
        m_classes.clear();
    }
    return m_classes[m_priority] = classifyPriority(priority).shown;
}

/// Reads the removed events from the file that held them, which has no name any more.
void Retention::tell(const UniqueFd &file, const Found &found) {
    // Few enough that a new event does not wait long behind them.
    constexpr std::size_t kMostLines = 256;
    std::string lines;
    std::size_t held = 0;
    std::uint64_t told = 0;
    bool works = true;
    const auto handOver = [&] {
        works = works && (held == 0 || m_feed.offer(std::move(lines)));
        told += works ? held : 0;
        lines.clear();
        held = 0;
    };
    for (const ByteRange &range : found.expired) {
        forEachPiece(file.get(), range, [&](std::uint64_t /*offset*/, std::string_view piece) {
            if (!canBeTold(piece)) {
                return true;
            }
            lines += piece;
            lines += piece.ends_with('\n') ? "" : "\r\n";
            if (++held == kMostLines) {
                handOver();
            }
            return works;
        });
        if (!works) {
            break;
        }
    }
    handOver();
    const std::uint64_t untold = found.count - told;
    m_untold += untold;
    if (!works) {
        say(JournalLevel::kWarning, std::to_string(untold) +
                                        " removed events could not be reported to the window; open "
                                        "it again to see what is stored");
    }
}

/// Says it once, not every minute.
void Retention::note(const std::string &name, const char *what) {
    if (m_stop) {
        return;
    }
    const std::string problem = "Old events are kept: " + name + " could not be " + what + ": " +
                                std::generic_category().message(errno);
    std::string &said = m_problems[name];
    if (problem != said) {
        say(JournalLevel::kError, problem);
        said = problem;
    }
}

}  // namespace quorbel
