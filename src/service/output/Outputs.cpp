#include "service/output/Outputs.h"

#include "service/base/Journal.h"
#include "service/output/ClusterOutput.h"
#include "service/output/ForwardOutput.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace quorbel {

Outputs::Outputs(LogStore &store, std::filesystem::path folder)
    : m_store(store), m_folder(std::move(folder)), m_reaper([this] { reap(); }) {}

Outputs::~Outputs() {
    stop();
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    m_wake.notifyAll();
    m_reaper.join();
}

std::vector<Outputs::Entry> Outputs::wantedBy(const ServiceConfiguration &configuration) {
    std::vector<Entry> wanted;
    for (const ForwardSettings &settings : configuration.forwards) {
        wanted.push_back({settings.name, settings, nullptr});
    }
    for (const ClusterSettings &settings : configuration.clusters) {
        wanted.push_back({settings.name, Cluster{settings, configuration.collector}, nullptr});
    }
    return wanted;
}

std::unique_ptr<Output> Outputs::make(const Settings &settings) {
    if (const auto *cluster = std::get_if<Cluster>(&settings)) {
        return std::make_unique<ClusterOutput>(m_store, m_folder, cluster->settings,
                                               cluster->collector);
    }
    return std::make_unique<ForwardOutput>(m_store, m_folder, std::get<ForwardSettings>(settings));
}

void Outputs::configure(const ServiceConfiguration &configuration) {
    std::vector<Entry> wanted = wantedBy(configuration);
    const MutexLock lock(m_mutex);
    for (Entry &before : m_entries) {
        const auto same = std::ranges::find_if(wanted, [&before](const Entry &entry) {
            return entry.name == before.name && entry.settings == before.settings;
        });
        if (same != wanted.end()) {
            same->output = std::move(before.output);
        } else {
            retire(before);
        }
    }
    m_entries = std::move(wanted);
    beginWhatCan();
}

/// Two outputs of a name would have one cursor.
void Outputs::beginWhatCan() {
    for (Entry &entry : m_entries) {
        if (!entry.output && !isEnding(entry.name)) {
            begin(entry);
        }
    }
}

void Outputs::begin(Entry &entry) {
    try {
        entry.output = make(entry.settings);
        entry.output->start();
    } catch (const std::system_error &error) {
        // For want of descriptors or threads; the reaper tries again.
        entry.output.reset();
        say(JournalLevel::kWarning,
            "Output " + entry.name + " could not be started: " + error.code().message());
    }
}

void Outputs::retire(Entry &entry) {
    if (entry.output) {
        entry.output->askToStop();
        m_ending.push_back(std::move(entry));
        m_wake.notifyAll();
    }
}

bool Outputs::isEnding(const std::string &name) const {
    return std::ranges::find(m_ending, name, &Entry::name) != m_ending.end();
}

void Outputs::reap() {
    constexpr std::chrono::seconds kInterval{10};
    MutexLock lock(m_mutex);
    while (!m_stop) {
        m_wake.waitFor(lock, kInterval,
                       [this]() REQUIRES(m_mutex) { return m_stop || !m_ending.empty(); });
        while (!m_ending.empty()) {
            Output &ending = *m_ending.front().output;
            lock.unlock();
            ending.stop();
            lock.lock();
            m_ended += ending.totals();
            std::unique_ptr<Output> output = std::move(m_ending.front().output);
            lock.unlock();
            // Gone before another one of its name is made.
            output.reset();
            lock.lock();
            m_ending.erase(m_ending.begin());
            m_wake.notifyAll();
        }
        if (!m_stop) {
            beginWhatCan();
        }
    }
}

void Outputs::stop() {
    MutexLock lock(m_mutex);
    for (Entry &entry : std::exchange(m_entries, {})) {
        retire(entry);
    }
    m_wake.wait(lock, [this]() REQUIRES(m_mutex) { return m_ending.empty(); });
}

OutputTotals Outputs::totals() const {
    const MutexLock lock(m_mutex);
    OutputTotals totals = m_ended;
    for (const std::vector<Entry> *entries : {&m_entries, &m_ending}) {
        for (const Entry &entry : *entries) {
            totals += entry.output ? entry.output->totals() : OutputTotals();
        }
    }
    return totals;
}

std::vector<OutputState> Outputs::states() const {
    const MutexLock lock(m_mutex);
    std::vector<OutputState> states;
    for (const Entry &entry : m_entries) {
        if (entry.output) {
            states.push_back(entry.output->state());
        }
    }
    return states;
}

}  // namespace quorbel
