#include "Fuzz.h"
#include "common/ServiceConfiguration.h"
#include "platform/Text.h"

#include <set>
#include <string>
#include <variant>

namespace quorbel {

namespace {

void requireFit(const ServiceConfiguration &configuration) {
    std::set<std::string> names;
    require(!configuration.collector.empty(), "a collector has a name");
    for (const ForwardSettings &output : configuration.forwards) {
        require(!output.server.empty() && !output.serverName.empty() && output.port != 0,
                "a server is known");
        require(output.certificateFile.empty() == output.keyFile.empty(), "a pair or neither");
        require(names.insert(output.name).second, "names are unique");
    }
    for (const ClusterSettings &output : configuration.clusters) {
        require(!output.servers.empty(), "a cluster has servers");
        require(names.insert(output.name).second, "names are unique");
    }
    require(names.size() <= ServiceConfiguration::kMostOutputs, "outputs are not too many");
    for (const std::string &name : names) {
        require(!name.empty() && name.size() <= 32 && name.find('/') == std::string::npos &&
                    name.find('.') == std::string::npos,
                "a name is fit for a file");
    }
}

}  // namespace

/// A configuration can be relied on, or each mistake in it is one legible line with its place.
void tryInput(std::string_view bytes) {
    const auto read = parseServiceConfiguration(bytes, "quorbelsrv.conf");
    if (const auto *configuration = std::get_if<ServiceConfiguration>(&read)) {
        requireFit(*configuration);
        const LogLine line{"1767312000", "Local7.Error", "10.0.0.5", "disk full"};
        for (const ForwardSettings &output : configuration->forwards) {
            require(!output.filter.isEmpty() || output.filter.matches(line),
                    "without a filter everything is meant");
        }
        return;
    }
    const auto &problems = std::get<std::vector<ConfigurationProblem>>(read);
    require(!problems.empty() && problems.size() <= 100, "there is something wrong");
    std::size_t line = 0;
    for (const ConfigurationProblem &problem : problems) {
        const std::string text = describe(problem);
        require(isUtf8(text) && text.find('\n') == std::string::npos, "a mistake is one line");
        require(problem.line >= line, "mistakes stand in the order of their lines");
        line = problem.line;
    }
}

}  // namespace quorbel
