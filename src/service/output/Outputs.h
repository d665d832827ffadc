#pragma once

#include "common/ServiceConfiguration.h"
#include "platform/Mutex.h"
#include "service/base/OutputState.h"
#include "service/output/Output.h"

#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace quorbel {

/// All outputs that the configuration wants. Any thread.
///
/// An output goes on as it is while its settings stay the same. One whose settings change ends
/// first, and then begins where it was; what is not wanted any more keeps its cursor.
class Outputs {
public:
    /// The cursors stand in `folder`. `store` must outlive the object.
    Outputs(LogStore &store, std::filesystem::path folder);
    /// Does what stop() does.
    ~Outputs();
    Outputs(const Outputs &) = delete;
    Outputs &operator=(const Outputs &) = delete;

    /// New outputs have what is stored from then on. Waits for the disk only.
    void configure(const ServiceConfiguration &configuration);
    /// Ends all of them: it waits until they have said goodbye to their receivers.
    void stop();

    /// In the order of the configuration.
    [[nodiscard]] std::vector<OutputState> states() const;
    /// Of all that there are and were; never less than before.
    [[nodiscard]] OutputTotals totals() const;

private:
    /// With what the service is called there.
    struct Cluster {
        ClusterSettings settings;
        std::string collector;
        bool operator==(const Cluster &) const = default;
    };
    using Settings = std::variant<ForwardSettings, Cluster>;
    /// One name.
    struct Entry {
        std::string name;
        Settings settings;
        std::unique_ptr<Output> output;  ///< nothing while another one with its cursor ends
    };

    static std::vector<Entry> wantedBy(const ServiceConfiguration &configuration);
    [[nodiscard]] std::unique_ptr<Output> make(const Settings &settings);
    void beginWhatCan() REQUIRES(m_mutex);
    void begin(Entry &entry) REQUIRES(m_mutex);
    void retire(Entry &entry) REQUIRES(m_mutex);
    [[nodiscard]] bool isEnding(const std::string &name) const REQUIRES(m_mutex);
    void reap();

    LogStore &m_store;
    const std::filesystem::path m_folder;

    mutable Mutex m_mutex;
    Condition m_wake;
    bool m_stop GUARDED_BY(m_mutex) = false;
    std::vector<Entry> m_entries GUARDED_BY(m_mutex);
    std::vector<Entry> m_ending GUARDED_BY(m_mutex);  ///< not wanted any more
    OutputTotals m_ended GUARDED_BY(m_mutex);

    std::thread m_reaper;  ///< waits for those that end
};

}  // namespace quorbel
