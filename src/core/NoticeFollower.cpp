#include "core/NoticeFollower.h"

#include "core/LogFields.h"

#include <array>
#include <ctime>
#include <utility>

namespace quorbel {

namespace {

/// How many notices are taken in between two looks at the clock.
constexpr unsigned kNoticesAtOnce = 16;

std::string_view valueOf(const NotificationInfo &info, std::string_view wanted) {
    for (const auto &[key, value] : info) {
        if (key == wanted) {
            return value;
        }
    }
    return {};
}

/// What tells an event from others; the bus hands on no text with a NUL.
std::string keyOf(const std::array<std::string_view, 4> &fields) {
    std::string key;
    for (const std::string_view field : fields) {
        key += field;
        key += '\0';
    }
    return key;
}

std::string keyOf(const NotificationInfo &info) {
    return keyOf({valueOf(info, "Date"), valueOf(info, "Priority"), valueOf(info, "Host"),
                  valueOf(info, "Message")});
}

}  // namespace

NoticeFollower::NoticeFollower(NoticeSink &sink, const std::filesystem::path &folder,
                               const std::vector<LogExtent> &read, const Together &together)
    : m_sink(sink),
      m_together(together),
      m_files([&] {
          LogIdentities files(folder);
          files.set(read);
          return files;
      }()),
      m_ledger(m_files.placeBehind(read)),
      m_reader(folder) {}

NotificationFollower::Requests NoticeFollower::takeRequests() {
    return std::exchange(m_requests, {});
}

void NoticeFollower::askedToListen() {
    m_state = State::kAsking;
    m_held.clear();
}

void NoticeFollower::hearsSinglesOnly() {
    m_state = State::kSingles;
    for (const Held &held : std::exchange(m_held, {})) {
        m_sink.notified({held.info.begin(), held.info.end()});
    }
}

void NoticeFollower::serviceWent() {
    m_state = State::kDeaf;
    m_held.clear();
    m_requests = {};
}

void NoticeFollower::listens(const Checkpoint &now, std::uint64_t waiting) {
    m_state = State::kListening;
    // Told before the answer, they are in the log up to its place.
    m_held.clear();
    const bool isAnew = m_mustReadAnew || m_ledger.judgeAnswer(now, m_files.areThere()) ==
                                              NoticeLedger::Verdict::kAnew;
    startGap(now, waiting, isAnew);
}

void NoticeFollower::notified(const NotificationInfo &info) {
    if (m_state == State::kAsking) {
        m_held.push_back({{info.begin(), info.end()}});
        return;
    }
    const std::string_view type = valueOf(info, "Type");
    if (m_state == State::kListening && type == "Set" && !m_ledger.tellSet(keyOf(info))) {
        return;
    }
    if (m_state == State::kListening && type == "Remove") {
        m_ledger.tellRemove();
    }
    m_sink.notified(info);
}

void NoticeFollower::checkpointCame(std::uint64_t number, const Checkpoint &checkpoint) {
    if (m_state != State::kListening) {
        return;
    }
    m_number = number;
    if (arriveAt(checkpoint) && !m_gap) {
        m_requests.taken = number;
    }
}

void NoticeFollower::batchCame(std::uint64_t number, std::optional<NotificationBatch> batch,
                               const Checkpoint &before, const Checkpoint &behind) {
    if (m_state != State::kListening) {
        return;
    }
    m_number = number;
    if (!batch) {
        // The next one shows that it is missing.
        m_requests.taken = number;
    } else if (arriveAt(before)) {
        m_batch = Batch{*std::move(batch), behind};
    }
}

/// Compares what was told with what has come, and begins to read what was missed. False when the
/// service has to be asked first.
bool NoticeFollower::arriveAt(const Checkpoint &checkpoint) {
    const std::uint64_t edits = m_ledger.edits();
    switch (m_ledger.judge(checkpoint)) {
        case NoticeLedger::Verdict::kFits:
            noteFiles(checkpoint, edits);
            return true;
        case NoticeLedger::Verdict::kGap:
            return startGap(checkpoint, 0, false);
        case NoticeLedger::Verdict::kAnew:
            // Up to where, only an answer says.
            m_mustReadAnew = true;
            break;
        case NoticeLedger::Verdict::kAsk:
            break;
    }
    ask();
    return false;
}

/// `edits` is what they were before that checkpoint.
void NoticeFollower::noteFiles(const Checkpoint &checkpoint, std::uint64_t edits) {
    if (checkpoint.edits != edits) {
        m_files.remember();
    }
    m_files.add(checkpoint.place);
}

void NoticeFollower::ask() {
    ++m_timesAsked;
    m_batch.reset();
    m_state = State::kAsking;
    m_requests = {true, std::nullopt};
}

/// False when the service is asked again first.
bool NoticeFollower::startGap(const Checkpoint &until, std::uint64_t waiting, bool isAnew) {
    m_load.reset();
    const GapReader::Start start = isAnew ? m_reader.beginAnew(until.place, m_ledger.newest())
                                          : m_reader.begin(m_ledger.sure(), until.place);
    if (start == GapReader::Start::kReady) {
        m_gap = Gap{until, waiting, isAnew};
        if (isAnew) {
            m_sink.logBeginsAnew();
        }
        return true;
    }
    m_mustReadAnew = isAnew || start == GapReader::Start::kLost;
    if (m_timesAsked < kMostAsked) {
        ask();
        return false;
    }
    // Nor could the log be read at the start.
    caughtUp({until, waiting, false});
    return true;
}

void NoticeFollower::caughtUp(const Gap &gap) {
    // What a removal has replaced that is still to be told stays known as it was.
    gap.isAnew || gap.until.edits != m_ledger.edits() ? m_files.remember() : m_files.rememberNew();
    m_ledger.caughtUp(gap.until, gap.waiting);
    m_mustReadAnew = false;
    m_timesAsked = 0;
    if (gap.isAnew) {
        m_sink.logWasReadAnew();
    }
    if (!m_batch) {
        m_requests.taken = m_number;
    }
}

void NoticeFollower::work(bus::Clock::time_point until) {
    m_isWaiting = false;
    m_sink.manyBegin();
    if (m_gap) {
        readGap(until);
    } else if (m_batch) {
        takeBatch(until);
    }
    m_sink.manyEnd();
}

void NoticeFollower::readGap(bus::Clock::time_point until) {
    if (!m_load && canLoadGap()) {
        m_load.emplace(m_reader.takeRest(), std::time(nullptr), m_together.shares);
    }
    const bool isDone = m_load          ? loadGap(until)
                        : areManyLeft() ? readTogether(until)
                                        : readLineByLine(until);
    if (isDone) {
        m_load.reset();
        caughtUp(*std::exchange(m_gap, std::nullopt));
    }
}

bool NoticeFollower::areManyLeft() const {
    return m_reader.bytesLeft() >= m_together.least && m_sink.canTakeMany();
}

/// Not while lines may be among it that are listed already.
bool NoticeFollower::canLoadGap() const {
    return (m_gap->isAnew || !m_ledger.wasAnyReceived()) && areManyLeft();
}

/// Whether that was all.
bool NoticeFollower::loadGap(bus::Clock::time_point until) {
    do {
        std::optional<LogLoad::Batch> batch = m_load->poll();
        if (!batch) {
            m_isWaiting = !m_load->isDone();
            return !m_isWaiting;
        }
        m_gap->isAnew ? m_sink.manyReadAnew(std::move(batch->loaded))
                      : m_sink.manyMissed(std::move(batch->loaded));
    } while (bus::Clock::now() < until);
    return false;
}

/// What of the next lines is not listed already. Whether that was all.
bool NoticeFollower::readTogether(bus::Clock::time_point until) {
    LoadedArrivals arrivals{LoadedEvents(m_expectedBytes)};
    const std::int64_t now = std::time(nullptr);
    const auto onLine = [&](const LogLine &line) {
        if (!wasReceived(line)) {
            arrivals.add(fieldsOf(line), now);
        }
        return true;
    };
    m_reader.run(onLine, [until] { return bus::Clock::now() >= until; });
    arrivals.events.close();
    m_expectedBytes = arrivals.events.expectedBytes();
    m_sink.manyMissed(std::move(arrivals));
    return m_reader.isDone();
}

bool NoticeFollower::wasReceived(const LogLine &line) {
    return m_ledger.wasReceived(keyOf({line.date, line.priority, line.host, line.message}));
}

/// Whether that was all.
bool NoticeFollower::readLineByLine(bus::Clock::time_point until) {
    const auto onLine = [this](const LogLine &line) {
        if (m_gap->isAnew) {
            m_sink.readAnew(fieldsOf(line));
        } else if (!wasReceived(line)) {
            m_sink.missed(fieldsOf(line));
        }
        return true;
    };
    m_reader.run(onLine, [until] { return bus::Clock::now() >= until; });
    return m_reader.isDone();
}

void NoticeFollower::takeBatch(bus::Clock::time_point until) {
    unsigned notices = 0;
    while (m_batch->run < m_batch->notices.runs().size()) {
        const NotificationRun &run = m_batch->notices.runs()[m_batch->run];
        const std::string_view rest = run.lines.substr(m_batch->offset);
        if (rest.empty()) {
            ++m_batch->run;
            m_batch->offset = 0;
            continue;
        }
        const bool isLong = canTakeMany(run, rest);
        if (isLong) {
            m_batch->offset += takeMany(rest);
        }
        if ((isLong || ++notices % kNoticesAtOnce == 0) && bus::Clock::now() >= until) {
            return;
        }
        if (isLong) {
            continue;
        }
        const std::string_view line = rest.substr(0, rest.find('\n') + 1);
        m_batch->offset += line.size();
        takeLine(run.type, line);
    }
    finishBatch();
}

bool NoticeFollower::canTakeMany(const NotificationRun &run, std::string_view rest) const {
    return run.type == NotificationType::kSet && rest.size() >= m_together.least &&
           m_ledger.areSetsNew() && m_sink.canTakeMany();
}

/// Takes in the first of these lines; how many bytes they were.
std::size_t NoticeFollower::takeMany(std::string_view lines) {
    LoadedArrivals arrivals{LoadedEvents(m_expectedBytes)};
    const std::int64_t now = std::time(nullptr);
    std::uint64_t count = 0;
    std::size_t taken = 0;
    while (taken < lines.size() && taken < m_together.shares.bytes) {
        const std::string_view line = lines.substr(taken, lines.find('\n', taken) + 1 - taken);
        taken += line.size();
        ++count;
        if (const auto split = splitLogLine(line)) {
            arrivals.add(fieldsOf(*split), now);
        }
    }
    arrivals.events.close();
    m_expectedBytes = arrivals.events.expectedBytes();
    m_ledger.tellSets(count);
    m_sink.manyNotified(std::move(arrivals));
    return taken;
}

void NoticeFollower::takeLine(NotificationType type, std::string_view line) {
    if (type == NotificationType::kRemove) {
        m_ledger.tellRemove();
    } else if (!m_ledger.tellSet()) {
        return;
    }
    const auto split = splitLogLine(line);
    if (!split) {
        return;
    }
    const EventFields fields = fieldsOf(*split);
    m_info.assign({{"Type", nameOf(type)}});
    const std::pair<const char *, std::optional<std::string_view>> values[] = {
        {"Date", fields.date},
        {"Priority", fields.priority},
        {"Host", fields.host},
        {"Message", fields.message},
    };
    for (const auto &[key, value] : values) {
        if (value) {
            m_info.emplace_back(key, *value);
        }
    }
    m_sink.notified(m_info);
}

void NoticeFollower::finishBatch() {
    const Checkpoint behind = std::exchange(m_batch, std::nullopt)->behind;
    const std::uint64_t edits = m_ledger.edits();
    if (m_ledger.judge(behind) != NoticeLedger::Verdict::kFits) {
        // It was not what was said of it, and which of its events the log has nobody knows.
        m_mustReadAnew = true;
        ask();
        return;
    }
    noteFiles(behind, edits);
    m_requests.taken = m_number;
}

}  // namespace quorbel
