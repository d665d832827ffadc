#pragma once

#include "platform/Files.h"
#include "platform/Value.h"
#include "service/output/EventFeed.h"
#include "service/output/SystemSteps.h"
#include "service/store/EventRemoval.h"
#include "service/store/EventRestoration.h"
#include "service/store/LogStore.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel::testing {

/// What happened to a feed and its log files, told by processes that may end at any moment: one
/// line each, written before what it says can be relied on.
class FeedTrace {
public:
    explicit FeedTrace(const std::filesystem::path &file)
        : m_file(static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file.c_str(),
                                            O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600))) {}

    void note(char what, std::uint64_t number, std::string_view line) const {
        const std::string text =
            std::string(1, what) + ' ' + std::to_string(number) + ' ' + std::string(line) + '\n';
        ::syscall(SYS_write, m_file.get(), text.data(), text.size());
    }
    void notePiece(const EventFeed::Piece &piece) const {
        std::string_view rest = piece.lines;
        for (std::uint64_t number = piece.first; !rest.empty(); ++number) {
            const std::size_t length = rest.find('\n');
            note('D', number, rest.substr(0, length));
            rest.remove_prefix(length + 1);
        }
    }

private:
    UniqueFd m_file;
};

inline void forEachLine(std::string_view text,
                        const std::function<void(const std::string &line)> &onLine) {
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;
         text.remove_prefix(end + 1)) {
        onLine(std::string(text.substr(0, end)));
    }
}

/// With the CR of each.
inline void forEachLogLine(const std::filesystem::path &folder,
                           const std::function<void(const std::string &line)> &onLine) {
    for (const std::string &name : listFolder(folder)) {
        if (hasExtension(name, "log")) {
            forEachLine(readFile(folder / name).value_or(""), onLine);
        }
    }
}

/// One process's life: a store, a feed, and what happens to them by chance.
class FeedLife {
public:
    static constexpr std::int64_t kTime = 1699920000;  // a midnight in UTC
    static constexpr std::int64_t kDay = 24 * 3600;
    static constexpr std::size_t kDays = 3;

    /// Calls `onReady` when only what is tried comes next.
    FeedLife(const std::filesystem::path &folder, EventFeed::Settings settings, unsigned seed,
             const std::function<void()> &onReady)
        : m_folder(folder),
          m_trace(folder / "trace"),
          m_chance(seed),
          m_next(countStored()),
          m_store(folder / "library") {
        noteDoubles();
        onReady();
        m_store.prepare();
        m_feed = std::make_unique<EventFeed>(m_store, folder / "library" / "outputs",
                                             std::move(settings));
    }

    void step() {
        const auto what = m_chance() % 20;
        if (what < 6) {
            append();
        } else if (what < 13) {
            take();
        } else if (what < 16) {
            acknowledge();
        } else if (what == 16) {
            m_feed->rewind();
        } else if (what < 19) {
            remove();
        } else {
            restore();
        }
    }
    /// Takes all there is; false when the feed has a problem.
    bool drain() {
        while (auto piece = m_feed->take(1U << 16U)) {
            m_trace.notePiece(*piece);
            if (!m_feed->acknowledge(piece->first + piece->count)) {
                return false;
            }
        }
        return m_feed->problem().empty();
    }
    [[nodiscard]] EventFeed &feed() { return *m_feed; }

private:
    [[nodiscard]] std::int64_t countStored() const {
        const std::string trace = readFile(m_folder / "trace").value_or("");
        std::int64_t count = trace.starts_with('S') ? 1 : 0;
        for (std::size_t at = 0; (at = trace.find("\nS", at)) != std::string::npos; ++at) {
            ++count;
        }
        return count;
    }
    /// Of a day's lines, each is later than the ones before: undone deletions find their place.
    void append() {
        const std::int64_t day = static_cast<std::int64_t>(m_chance() % kDays);
        std::string lines;
        const auto count = m_chance() % 40;
        for (unsigned i = 0; i <= count; ++i) {
            const std::int64_t at = kTime + day * kDay + m_next;
            const std::string line = std::to_string(at) + ",User.Notice,h," +
                                     std::to_string(m_next) + std::string(m_chance() % 200, 'x');
            ++m_next;
            m_trace.note('S', 0, line + "\r");
            lines += line + "\r\n";
        }
        m_store.append(lines, kTime + day * kDay, m_chance() % 8 == 0);
    }
    void take() {
        if (const auto piece = m_feed->take(m_chance() % 20000)) {
            m_trace.notePiece(*piece);
            m_taken = piece->first + piece->count;
        }
    }
    void acknowledge() {
        const std::uint64_t less = m_chance() % 3 == 0 ? m_chance() % 50 : 0;
        m_feed->acknowledge(m_taken - std::min(m_taken, less));
    }
    /// A run of lines of a file, and now and then all of them.
    void remove() {
        const auto names = m_store.fileNames();
        if (!names || names->empty()) {
            return;
        }
        const std::string text =
            readFile(m_store.path((*names)[m_chance() % names->size()])).value_or("");
        std::vector<std::string> lines;
        forEachLine(text, [&lines](const std::string &line) {
            lines.push_back(line.substr(0, line.size() - 1));
        });
        if (lines.empty()) {
            return;
        }
        const bool isAll = m_chance() % 5 == 0;
        const std::size_t begin = isAll ? 0 : m_chance() % lines.size();
        const std::size_t end =
            isAll ? lines.size() : begin + 1 + m_chance() % (lines.size() - begin);
        EventRemoval removal({});
        Dictionary wanted;
        Array removed;
        for (std::size_t i = begin; i < end; ++i) {
            if (isAll || m_chance() % 3 != 0) {
                wanted.set(lines[i] + "\n", "1");
                removed.push_back(lines[i] + "\n");
                m_trace.note('R', 0, lines[i] + "\r");
            }
        }
        removal.want(wanted);
        removal.run(m_store, m_never);
        m_removed.push_back(std::move(removed));
    }
    void restore() {
        if (!m_removed.empty()) {
            const std::size_t which = m_chance() % m_removed.size();
            EventRestoration(m_removed[which], {}).run(m_store, m_never);
            m_removed.erase(m_removed.begin() + static_cast<std::ptrdiff_t>(which));
            noteDoubles();
        }
    }
    /// Where a log file could not be read, lines that it holds were put in once more: those are
    /// two events.
    void noteDoubles() {
        const SystemSteps steps = std::exchange(systemSteps(), {});
        std::set<std::string> seen;
        forEachLogLine(m_folder / "library", [&](const std::string &line) {
            if (!seen.insert(line).second) {
                m_trace.note('X', 0, line);
            }
        });
        systemSteps() = steps;
    }

    const std::filesystem::path m_folder;
    FeedTrace m_trace;
    std::mt19937 m_chance;
    std::int64_t m_next;
    LogStore m_store;
    std::unique_ptr<EventFeed> m_feed;
    std::uint64_t m_taken = 0;
    std::vector<Array> m_removed;
    std::atomic<bool> m_never = false;
};

/// What the trace and the log files say in the end.
struct FeedOutcome {
    std::map<std::uint64_t, std::string> byNumber;
    std::map<std::string, std::set<std::uint64_t>> byLine;
    std::set<std::string> removed;
    std::set<std::string> doubles;  ///< in the log
    std::set<std::string> inLog;
    std::vector<std::string> contradictions;

    explicit FeedOutcome(const std::filesystem::path &folder) {
        forEachLine(readFile(folder / "trace").value_or(""),
                    [this](const std::string &line) { take(line); });
        forEachLogLine(folder / "library", [this](const std::string &line) { inLog.insert(line); });
    }
    void take(const std::string &line) {
        const std::size_t space = line.find(' ', 2);
        const std::string text = line.substr(space + 1);
        const std::uint64_t number = std::stoull(line.substr(2, space - 2));
        if (line[0] == 'R') {
            removed.insert(text);
        } else if (line[0] == 'X') {
            doubles.insert(text);
        } else if (line[0] == 'D') {
            byLine[text].insert(number);
            const auto [entry, isNew] = byNumber.try_emplace(number, text);
            if (!isNew && entry->second != text) {
                contradictions.push_back(line + " was " + entry->second);
            }
        }
    }
    [[nodiscard]] std::vector<std::string> twice() const {
        std::vector<std::string> lines;
        for (const auto &[line, numbers] : byLine) {
            if (numbers.size() > 1 && !doubles.contains(line)) {
                lines.push_back(line);
            }
        }
        return lines;
    }
    /// Those of the log that came never; with `removedToo`, also where they were out of it once.
    [[nodiscard]] std::vector<std::string> lost(bool removedToo) const {
        std::vector<std::string> lines;
        for (const std::string &line : inLog) {
            if (!byLine.contains(line) && (removedToo || !removed.contains(line))) {
                lines.push_back(line);
            }
        }
        return lines;
    }
};

}  // namespace quorbel::testing
