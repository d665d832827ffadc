#pragma once

#include "service/output/ClusterDelivery.h"
#include "service/output/ForwardOutput.h"
#include "service/store/RemovalFeed.h"
#include "service/store/Retention.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

namespace quorbel::testing {

/// What a test and the collector that it forked say to one another, in memory that both have.
struct CollectorTalk {
    std::atomic<std::int64_t> clockShift = 0;
    std::atomic<unsigned> removalsWanted = 0;  ///< how often retention is to remove something
    std::atomic<unsigned> removalsBegun = 0;
    std::atomic<unsigned> removalsDone = 0;
    std::atomic<unsigned> diskProblems = 0;
    std::atomic<unsigned> certificateProblems = 0;

    /// Stays until the process ends.
    static CollectorTalk &make();
};

/// One life of a collector that stores and sends to a cluster and to a syslog server. The messages
/// of its events are nobody else's.
class Life {
public:
    struct Setup {
        std::filesystem::path library;
        std::filesystem::path ledger;  ///< gets each message that retention may remove, a line each
        ClusterSettings cluster;
        ForwardSettings forward;
    };
    static constexpr std::chrono::milliseconds kToInsert{300};

    Life(const Setup &setup, unsigned seed, CollectorTalk &talk);

    ~Life() { m_forward.stop(); }
    Life(const Life &) = delete;
    Life &operator=(const Life &) = delete;

    /// Until it is killed.
    [[noreturn]] void run();
    /// Until the cluster has all; false when it does not go on.
    bool finish();

    // How many events were removed before they were sent.
    [[nodiscard]] std::uint64_t removedBeforeCluster() const { return m_feed.removedUnsent(); }
    [[nodiscard]] std::uint64_t removedBeforeServer() const {
        return m_forward.state().removedUnsent;
    }

private:
    /// Retention, as long as it is at work.
    struct Removal {
        Removal(LogStore &store, std::atomic<unsigned> &passes);
        RemovalFeed feed{std::chrono::milliseconds(0)};  ///< nobody wants to be told
        Retention retention;
    };

    void append();
    /// How many of the lines were stored.
    std::size_t append(const std::string &severity, std::int64_t age, std::size_t count);
    void appendRemovable();
    void remove();
    bool send();

    CollectorTalk &m_talk;
    std::mt19937 m_random;
    const std::string m_name;
    const std::filesystem::path m_ledger;
    std::size_t m_count = 0;
    const std::atomic<bool> m_stop = false;
    std::atomic<unsigned> m_passes = 0;
    LogStore m_store;
    EventFeed m_feed;
    ClusterDelivery m_delivery;
    ForwardOutput m_forward;
    std::optional<Removal> m_removal;
};

}  // namespace quorbel::testing
