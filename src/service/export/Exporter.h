#pragma once

#include "platform/Mutex.h"
#include "platform/Value.h"
#include "service/base/LastResult.h"
#include "service/export/DatabaseExport.h"
#include "service/export/TextExport.h"
#include "service/store/LogStore.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {

/// Runs the exports that the settings ask for, each at its interval, on a thread of its own. One
/// runs at once when it is switched on or goes to another file. A problem is said in the journal
/// once until it changes, and tried again at the next interval.
class Exporter {
public:
    /// `store` must outlive the object. `minute` is how long a minute lasts, for tests.
    explicit Exporter(LogStore &store, std::chrono::milliseconds minute = std::chrono::minutes(1));
    /// Ends a running export early.
    ~Exporter();
    Exporter(const Exporter &) = delete;
    Exporter &operator=(const Exporter &) = delete;

    // From any thread.

    /// Ends a running export early, and begins no other.
    void stop();
    void configure(const Dictionary &settings);

    /// What came of each export that is on, since it has its file: "text", "database".
    [[nodiscard]] std::vector<NamedResult> results() const;

private:
    using Clock = std::chrono::steady_clock;

    struct Plan {
        std::chrono::milliseconds interval{0};  ///< 0: off
        ExportTarget target;

        bool operator==(const Plan &) const = default;
    };
    /// One of the two exports.
    struct Export {
        Plan plan;                ///< under m_mutex
        Clock::time_point due;    ///< under m_mutex
        std::string lastProblem;  ///< of the export thread
        std::shared_ptr<LastResult> result = std::make_shared<LastResult>();  ///< under m_mutex
        std::function<std::optional<std::string>(const ExportTarget &, const LogSources &)> run;
    };

    static void plan(Export &export_, Plan next);
    void work();
    Export *nextDue() REQUIRES(m_mutex);
    void runOne(Export &export_, ExportTarget target, LastResult &result);

    LogStore &m_store;
    const std::chrono::milliseconds m_minute;
    std::atomic<bool> m_stop = false;
    TextExport m_textExport;

    mutable Mutex m_mutex;
    Condition m_wake;
    std::array<Export, 2> m_exports GUARDED_BY(m_mutex);

    std::thread m_thread;
};

}  // namespace quorbel
