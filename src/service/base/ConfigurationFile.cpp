#include "service/base/ConfigurationFile.h"

#include "service/base/Journal.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace quorbel {

namespace {

/// More than these nobody reads in a journal.
constexpr std::size_t kMostSaid = 10;

}  // namespace

ConfigurationFile::ConfigurationFile(std::filesystem::path file) : m_file(std::move(file)) {
    m_current.collector = defaultCollectorName();
}

bool ConfigurationFile::load() {
    auto read = readServiceConfiguration(m_file);
    if (const auto *problems = std::get_if<std::vector<ConfigurationProblem>>(&read)) {
        sayProblems(*problems);
        return false;
    }
    if (std::get<ServiceConfiguration>(read) == m_current) {
        return false;
    }
    m_current = std::move(std::get<ServiceConfiguration>(read));
    say(JournalLevel::kInformation,
        "The configuration is in force: collector " + m_current.collector +
            ", relay networks: " + std::to_string(m_current.relays.size()) +
            ", outputs: " + std::to_string(m_current.forwards.size() + m_current.clusters.size()));
    return true;
}

void ConfigurationFile::sayProblems(const std::vector<ConfigurationProblem> &problems) const {
    for (std::size_t i = 0; i < std::min(problems.size(), kMostSaid); ++i) {
        say(JournalLevel::kError, "A mistake in the configuration: " + describe(problems[i]));
    }
    if (problems.size() > kMostSaid) {
        say(JournalLevel::kError,
            "More mistakes in the configuration: " + std::to_string(problems.size() - kMostSaid));
    }
    say(JournalLevel::kWarning, "The configuration is not used: what was in force stays in force");
}

}  // namespace quorbel
