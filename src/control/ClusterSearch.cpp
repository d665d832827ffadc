#include "control/ClusterSearch.h"

#include "cluster/ClusterClient.h"
#include "control/Output.h"
#include "core/EventMatcher.h"
#include "core/HostPattern.h"
#include "core/StartSettings.h"
#include "platform/Number.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <utility>

namespace quorbel {

namespace {

/// Longer than any field of a log file.
constexpr std::size_t kMostFieldBytes = 16384;

ClusterConnection connectionOf(const ClusterSettings &cluster) {
    return {.servers = cluster.servers,
            .user = cluster.user,
            .passwordFile = cluster.passwordFile,
            .authorityFile = cluster.authorityFile};
}

LogLine shortened(LogLine event) {
    for (std::string_view *field : {&event.date, &event.priority, &event.host, &event.message}) {
        *field = field->substr(0, kMostFieldBytes);
    }
    return event;
}

bool isInRating(const TextPattern &pattern) {
    bool isIn = false;
    for (std::int64_t level = -1; level < static_cast<std::int64_t>(kRatingCount) - 1; ++level) {
        isIn = isIn || pattern.isIn(severityLevelName(level));
    }
    return isIn;
}

/// Whether the cluster's rows alone tell whether a text is there, or at least when it is not.
bool canBeAsked(const TextCondition &text, std::string_view dateFormat) {
    if (text.pattern.isExpression) {
        return false;
    }
    const TextPattern pattern(text.pattern);
    return text.isNegated || (!isInRating(pattern) && !mayBeInDates(pattern, dateFormat));
}

using Host = ClusterFilter::Host;

/// Nothing when it may hold addresses of IPv4 and others.
std::optional<Host> networkAsked(const HostPattern::Network &network) {
    const bool isV4 = network.address.isV4() && network.bits >= IpAddress::kV4Begin;
    if (isV4) {
        return Host{Host::Kind::kV4, network.address.network(network.bits).text(),
                    network.bits - IpAddress::kV4Begin};
    }
    const IpAddress anyV4 = IpAddress::parse("0.0.0.0").value();
    const bool mayHoldV4 =
        anyV4.sharesPrefix(network.address, std::min(network.bits, IpAddress::kV4Begin));
    return mayHoldV4 ? std::nullopt : std::optional(Host{Host::Kind::kAddress});
}

/// Nothing when a cluster's rows do not tell.
std::optional<Host> hostAsked(const HostPattern::Meaning &meaning) {
    if (meaning.host) {
        // A name that is not UTF-8 is none for the matcher.
        return meaning.host->empty() ? std::nullopt
                                     : std::optional(Host{Host::Kind::kExact, *meaning.host});
    }
    if (meaning.network) {
        return networkAsked(*meaning.network);
    }
    const bool isPlain = std::ranges::all_of(meaning.name, [](char character) {
        return static_cast<unsigned char>(character) < 0x80U && character != '*' &&
               character != '?';
    });
    return isPlain ? std::optional(Host{Host::Kind::kName, meaning.name}) : std::nullopt;
}

void addHosts(std::string_view pattern, ClusterFilter &filter) {
    bool isAsked = true;
    for (const HostPattern::Meaning &meaning : HostPattern::meaningsOf(pattern)) {
        const auto host = hostAsked(meaning);
        isAsked = isAsked && (host || meaning.isExcluded);
        if (host) {
            (meaning.isExcluded ? filter.otherHosts : filter.hosts).push_back(*host);
        }
    }
    if (!isAsked) {
        filter.hosts.clear();
    }
}

/// Has all rows of a statement looked at. How to end; what is wrong was said.
ExitCode read(const ClusterSettings &cluster, const std::string &statement, LogSearch &search) {
    const std::atomic<bool> goOn = false;
    ClusterAnswer answer([&search](const LogLine &event) { return search.add(shortened(event)); });
    ClusterClient client(connectionOf(cluster));
    std::string problem = client.query(
        statement, [&answer](std::string_view bytes) { return answer.add(bytes); }, goOn);
    if (problem.empty()) {
        problem = answer.problem();
    }
    search.finish();
    if (!problem.empty()) {
        complain("The cluster \"" + cluster.name + "\" cannot be asked: " + problem);
    }
    return problem.empty() ? ExitCode::kDone : ExitCode::kNotThere;
}

/// `makeStatement(place, filter)` says what to ask for.
template <typename MakeStatement>
ExitCode searchWith(const ClusterSettings &cluster, const EventQuery &asked,
                    const EventQuery &matched, const LogSearch::Handler &onFound,
                    MakeStatement makeStatement) {
    AppState state;
    takeStartSettings(state);
    const std::string statement = makeStatement(ClusterPlace{cluster.database, cluster.table},
                                                clusterFilterOf(asked, state.newDateFormat));
    bool hasFound = false;
    LogSearch search(std::move(state), matched, [&](const LogLine &event, EventRating rating) {
        hasFound = true;
        return onFound(event, rating);
    });
    const ExitCode code = read(cluster, statement, search);
    return code == ExitCode::kDone && !hasFound ? ExitCode::kNothing : code;
}

}  // namespace

ClusterFilter clusterFilterOf(const EventQuery &query, std::string_view dateFormat) {
    ClusterFilter filter;
    filter.from = query.from;
    filter.until = query.until;
    filter.leastSeverity = query.leastSeverity;
    filter.classes = query.classes;
    filter.facility = query.facility;
    addHosts(query.host, filter);
    for (const TextCondition &text : query.texts) {
        if (canBeAsked(text, dateFormat)) {
            filter.texts.push_back(
                {text.pattern.text, text.pattern.isCaseSensitive, text.isNegated});
        }
    }
    return filter;
}

ExitCode searchCluster(const ClusterSettings &cluster, const EventQuery &query,
                       const LogSearch::Handler &onFound) {
    return searchWith(cluster, query, query, onFound, selectEvents);
}

ExitCode countCluster(const ClusterSettings &cluster, const EventQuery &query,
                      const std::function<void(const LogLine &event, EventRating rating,
                                               std::uint64_t count)> &onFound) {
    // The quarters' first moments are not those of their events, which the cluster looks at.
    EventQuery matched = query;
    matched.from.reset();
    matched.until.reset();
    const auto onCount = [&onFound](const LogLine &event, EventRating rating) {
        onFound(event, rating, readNumber<std::uint64_t>(event.message).value_or(0));
        return true;
    };
    return searchWith(cluster, query, matched, onCount, selectCounts);
}

}  // namespace quorbel
