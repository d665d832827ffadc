#include "cluster/PrintedSchema.h"

#include "cluster/ClusterSchema.h"
#include "common/ServiceConfiguration.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <variant>

namespace quorbel {

namespace {

struct Request {
    std::string name;
    std::string file = kServiceConfigurationFile;
};

std::optional<Request> requestOf(std::vector<std::string_view> arguments) {
    Request request;
    const auto option = std::ranges::find(arguments, "--config");
    if (option != arguments.end() && option + 1 != arguments.end()) {
        request.file = option[1];
        arguments.erase(option, option + 2);
    }
    if (arguments.empty() || arguments.size() > 2 || arguments[0] != "--cluster-schema" ||
        arguments.back() == "--config") {
        return std::nullopt;
    }
    request.name = arguments.size() > 1 ? arguments[1] : "";
    return request;
}

std::string schemaOf(const ClusterSettings &cluster) {
    return clusterSchema({cluster.database, cluster.table}, hostsOfServers(cluster.servers));
}

using Schema = std::variant<std::string, std::vector<std::string>>;  ///< or what is wrong

Schema schemaFor(const Request &request) {
    const auto read = readServiceConfiguration(request.file);
    if (const auto *mistakes = std::get_if<std::vector<ConfigurationProblem>>(&read)) {
        std::vector<std::string> problems;
        std::ranges::transform(*mistakes, std::back_inserter(problems), describe);
        return problems;
    }
    const auto &clusters = std::get<ServiceConfiguration>(read).clusters;
    if (request.name.empty() && clusters.size() < 2) {
        return schemaOf(clusters.empty() ? ClusterSettings() : clusters.front());
    }
    const auto named = std::ranges::find(clusters, request.name, &ClusterSettings::name);
    if (named == clusters.end()) {
        return std::vector{request.name.empty()
                               ? request.file + " names several clusters: say which one"
                               : request.file + " names no cluster \"" + request.name + '"'};
    }
    return schemaOf(*named);
}

}  // namespace

std::optional<int> printClusterSchema(const std::vector<std::string_view> &arguments) {
    const auto request = requestOf(arguments);
    if (!request) {
        return std::nullopt;
    }
    const Schema schema = schemaFor(*request);
    if (const auto *problems = std::get_if<std::vector<std::string>>(&schema)) {
        for (const std::string &problem : *problems) {
            std::fprintf(stderr, "%s\n", problem.c_str());
        }
        return EXIT_FAILURE;
    }
    const bool isPrinted =
        std::fputs(std::get<std::string>(schema).c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isPrinted ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace quorbel
