#include "control/EventSource.h"

#include "control/ClusterSearch.h"
#include "control/FileSearch.h"
#include "control/Output.h"

#include <algorithm>

namespace quorbel {

namespace {

Option fileOption(const char *name, std::string &value) {
    return {name, '\0', true, [&value](std::string_view text) {
                value = text;
                return std::string();
            }};
}

ExitCode refuse(const std::string &problem) {
    complain(problem);
    return ExitCode::kNotThere;
}

}  // namespace

std::vector<Option> EventSource::options() {
    Option named = fileOption("cluster-name", m_clusterName);
    named.take = [this, take = named.take](std::string_view text) {
        m_asksCluster = true;
        return take(text);
    };
    return {flag("cluster", '\0', m_asksCluster), named, fileOption("config", m_configuration)};
}

EventSource::Choice EventSource::cluster() const {
    const auto read = readServiceConfiguration(m_configuration);
    if (const auto *problems = std::get_if<std::vector<ConfigurationProblem>>(&read)) {
        return refuse(describe(problems->front()));
    }
    const auto &clusters = std::get<ServiceConfiguration>(read).clusters;
    if (clusters.empty()) {
        return refuse(m_configuration + " names no cluster");
    }
    if (m_clusterName.empty() && clusters.size() > 1) {
        return refuse(m_configuration + " names several clusters: --cluster-name says which one");
    }
    const auto named = std::ranges::find(clusters, m_clusterName, &ClusterSettings::name);
    if (!m_clusterName.empty() && named == clusters.end()) {
        return refuse(m_configuration + " names no cluster \"" + m_clusterName + '"');
    }
    return m_clusterName.empty() ? clusters.front() : *named;
}

ExitCode EventSource::search(const EventQuery &query, const LogSearch::Handler &onFound) const {
    if (!m_asksCluster) {
        return searchFiles(query, onFound);
    }
    const Choice choice = cluster();
    const auto *settings = std::get_if<ClusterSettings>(&choice);
    return settings != nullptr ? searchCluster(*settings, query, onFound)
                               : std::get<ExitCode>(choice);
}

ExitCode EventSource::count(const EventQuery &query, const CountHandler &onFound) const {
    const auto onEach = [&onFound](const LogLine &event, EventRating rating) {
        onFound(event, rating, 1);
        return true;
    };
    if (!m_asksCluster) {
        return searchFiles(query, onEach);
    }
    const Choice choice = cluster();
    const auto *settings = std::get_if<ClusterSettings>(&choice);
    return settings == nullptr   ? std::get<ExitCode>(choice)
           : query.texts.empty() ? countCluster(*settings, query, onFound)
                                 : searchCluster(*settings, query, onEach);
}

}  // namespace quorbel
