#include "service/export/Exporter.h"

#include "common/SettingsDocument.h"
#include "service/base/Journal.h"

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

// Beyond this, an interval is as good as none.
constexpr std::int64_t kLongestInterval = std::int64_t{366} * 24 * 60;

}  // namespace

Exporter::Exporter(LogStore &store, std::chrono::milliseconds minute)
    : m_store(store), m_minute(minute) {
    m_exports[0].run = [this](const ExportTarget &target, const LogSources &sources) {
        return m_textExport.run(target, sources, m_stop);
    };
    m_exports[1].run = [this](const ExportTarget &target, const LogSources &sources) {
        return DatabaseExport::run(target, sources, m_stop);
    };
    m_thread = std::thread([this] { work(); });
}

Exporter::~Exporter() {
    stop();
    m_thread.join();
}

void Exporter::stop() {
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    m_wake.notifyOne();
}

void Exporter::configure(const Dictionary &settings) {
    const std::string format = settingText(settings, "dateFormat").value_or("");
    const auto planFor = [&](std::string_view interval, std::string_view location) {
        const std::string file = settingText(settings, location).value_or("");
        const auto minutes =
            std::clamp<std::int64_t>(settingInteger(settings, interval), 0, kLongestInterval);
        return Plan{file.empty() ? std::chrono::milliseconds(0) : minutes * m_minute,
                    {file, format}};
    };
    {
        const MutexLock lock(m_mutex);
        plan(m_exports[0], planFor("textInterval", "textLocation"));
        plan(m_exports[1], planFor("databaseInterval", "databaseLocation"));
    }
    m_wake.notifyOne();
}

/// An export that goes on as before keeps its time, or gets an earlier one.
void Exporter::plan(Export &export_, Plan next) {
    const bool isNew =
        export_.plan.interval.count() == 0 || export_.plan.target.file != next.target.file;
    const auto now = Clock::now();
    export_.due = isNew ? now : std::min(export_.due, now + next.interval);
    if (isNew) {
        // One that is running goes on with the former one.
        export_.result = std::make_shared<LastResult>();
    }
    export_.plan = std::move(next);
}

/// The export that comes next; null when none is on.
Exporter::Export *Exporter::nextDue() {
    Export *next = nullptr;
    for (Export &export_ : m_exports) {
        if (export_.plan.interval.count() != 0 && (next == nullptr || export_.due < next->due)) {
            next = &export_;
        }
    }
    return next;
}

void Exporter::work() {
    MutexLock lock(m_mutex);
    while (!m_stop) {
        Export *next = nextDue();
        if (next == nullptr) {
            m_wake.wait(lock);
            continue;
        }
        const Clock::time_point now = Clock::now();
        if (next->due > now) {
            m_wake.waitUntil(lock, next->due);
            continue;
        }
        next->due = now + next->plan.interval;
        ExportTarget target = next->plan.target;
        const std::shared_ptr<LastResult> result = next->result;
        lock.unlock();
        runOne(*next, std::move(target), *result);
        lock.lock();
    }
}

void Exporter::runOne(Export &export_, ExportTarget target, LastResult &result) {
    const std::string named = target.file.string();
    const LogSources sources(m_store);
    std::optional<std::string> problem = checkExportTarget(target.file, m_store.path(""));
    if (!problem) {
        problem = sources.problem().empty() ? export_.run(target, sources) : sources.problem();
    }
    if (problem && *problem != export_.lastProblem) {
        say(JournalLevel::kError, "Export: " + *problem);
    } else if (!problem && !export_.lastProblem.empty()) {
        say(JournalLevel::kNotice, "Export: " + named + " is up to date again");
    }
    export_.lastProblem = problem.value_or("");
    problem ? result.noteFailed(*problem) : result.noteDone();
}

std::vector<NamedResult> Exporter::results() const {
    constexpr std::array<const char *, 2> kNames{"text", "database"};
    std::vector<NamedResult> results;
    const MutexLock lock(m_mutex);
    for (std::size_t i = 0; i < m_exports.size(); ++i) {
        if (m_exports.at(i).plan.interval.count() != 0) {
            results.push_back({kNames.at(i), m_exports.at(i).result->summary()});
        }
    }
    return results;
}

}  // namespace quorbel
