#pragma once

#include "common/EventFields.h"
#include "core/GapReader.h"
#include "core/LoadedEvents.h"
#include "core/LogIdentities.h"
#include "core/LogLoad.h"
#include "core/NoticeLedger.h"
#include "platform/bus/NotificationFollower.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// Where notices go, and what the window missed of them.
class NoticeSink {
public:
    virtual ~NoticeSink() = default;
    /// One that was told, alone or in a batch.
    virtual void notified(const NotificationInfo &info) = 0;
    /// An event that was not told, from the log.
    virtual void missed(const EventFields &event) = 0;
    /// What the window holds is void: the whole log follows, each event as read at the start.
    virtual void logBeginsAnew() = 0;
    virtual void readAnew(const EventFields &event) = 0;
    virtual void logWasReadAnew() = 0;
    /// Whether many events that come at a time are sooner taken in together. They may be handed
    /// over so some moments after this was asked.
    [[nodiscard]] virtual bool canTakeMany() const = 0;
    /// Many that were told, missed, or read anew, in their order: as if each came alone.
    virtual void manyNotified(LoadedArrivals events) = 0;
    virtual void manyMissed(LoadedArrivals events) = 0;
    virtual void manyReadAnew(LoadedArrivals events) = 0;
    /// Around many of these that come at a time.
    virtual void manyBegin() = 0;
    virtual void manyEnd() = 0;

protected:
    NoticeSink() = default;
    NoticeSink(const NoticeSink &) = default;
    NoticeSink &operator=(const NoticeSink &) = default;
};

/// Takes in what the service tells and, from the log files, what it could not tell: each event
/// once, whatever was dropped, restarted or replaced on the way. Main thread only.
class NoticeFollower final : public NotificationFollower {
public:
    /// When events are taken in together, and how.
    struct Together {
        /// Fewer bytes of lines are not worth it: each begins a chunk of the list.
        std::uint64_t least = std::uint64_t{128} << 10U;
        /// So many at a time are handed over, for some milliseconds' work.
        LogLoad::Shares shares{.bytes = std::uint64_t{1} << 20U};
    };
    /// `read` is how far the log files of `folder` were read into the window. The sink outlives the
    /// follower.
    NoticeFollower(NoticeSink &sink, const std::filesystem::path &folder,
                   const std::vector<LogExtent> &read, const Together &together);
    NoticeFollower(NoticeSink &sink, const std::filesystem::path &folder,
                   const std::vector<LogExtent> &read)
        : NoticeFollower(sink, folder, read, Together()) {}

    void askedToListen() override;
    void listens(const Checkpoint &now, std::uint64_t waiting) override;
    void hearsSinglesOnly() override;
    void serviceWent() override;
    void notified(const NotificationInfo &info) override;
    void batchCame(std::uint64_t number, std::optional<NotificationBatch> batch,
                   const Checkpoint &before, const Checkpoint &behind) override;
    void checkpointCame(std::uint64_t number, const Checkpoint &checkpoint) override;
    [[nodiscard]] bool isBusy() const override { return m_gap.has_value() || m_batch.has_value(); }
    [[nodiscard]] bool isWaiting() const override { return m_isWaiting; }
    void work(bus::Clock::time_point until) override;
    Requests takeRequests() override;

private:
    /// How often the service is asked where it is before the log counts as unreadable.
    static constexpr unsigned kMostAsked = 5;

    enum class State {
        kDeaf,     ///< there is no service
        kAsking,   ///< what comes now is in the log by the time of the answer
        kSingles,  ///< it tells of nothing but notifications
        kListening
    };
    /// What of the log is being read.
    struct Gap {
        Checkpoint until;
        std::uint64_t waiting = 0;
        bool isAnew = false;
    };
    struct Batch {
        NotificationBatch notices;
        Checkpoint behind;
        std::size_t run = 0;
        std::size_t offset = 0;  ///< in the run's lines
    };
    /// A notification that waits until it is known what it counts for.
    struct Held {
        std::vector<std::pair<std::string, std::string>> info;
    };

    bool arriveAt(const Checkpoint &checkpoint);
    bool startGap(const Checkpoint &until, std::uint64_t waiting, bool isAnew);
    void noteFiles(const Checkpoint &checkpoint, std::uint64_t edits);
    void ask();
    void caughtUp(const Gap &gap);
    void readGap(bus::Clock::time_point until);
    [[nodiscard]] bool readTogether(bus::Clock::time_point until);
    [[nodiscard]] bool wasReceived(const LogLine &line);
    [[nodiscard]] bool readLineByLine(bus::Clock::time_point until);
    [[nodiscard]] bool areManyLeft() const;
    [[nodiscard]] bool canLoadGap() const;
    [[nodiscard]] bool loadGap(bus::Clock::time_point until);
    void takeBatch(bus::Clock::time_point until);
    [[nodiscard]] bool canTakeMany(const NotificationRun &run, std::string_view rest) const;
    [[nodiscard]] std::size_t takeMany(std::string_view lines);
    void takeLine(NotificationType type, std::string_view line);
    void finishBatch();

    NoticeSink &m_sink;
    const Together m_together;
    LogIdentities m_files;
    NoticeLedger m_ledger;
    GapReader m_reader;
    State m_state = State::kDeaf;
    bool m_mustReadAnew = false;
    unsigned m_timesAsked = 0;  // in vain
    std::optional<Gap> m_gap;
    std::optional<LogLoad> m_load;  // of the gap's rest
    bool m_isWaiting = false;       // for it
    std::size_t m_expectedBytes = 0;
    std::optional<Batch> m_batch;
    std::uint64_t m_number = 0;  // of what is being taken in
    std::vector<Held> m_held;
    NotificationInfo m_info;
    Requests m_requests;
};

}  // namespace quorbel
