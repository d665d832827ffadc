#include "soak/EventComparison.h"

#include "common/LogReader.h"
#include "core/EventList.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <string_view>
#include <vector>

namespace quorbel::soak {

namespace {

std::string joined(std::string_view date, std::string_view priority, std::string_view host,
                   std::string_view message) {
    std::string event;
    for (const std::string_view field : {date, priority, host, message}) {
        event += field;
        event += ',';
    }
    return event;
}

void forEachLogged(const std::function<void(const std::string &event)> &handle) {
    for (const auto &file : logFiles()) {
        LogReader::readFile(file, [&](const LogLine &line) {
            handle(joined(line.date, line.priority, line.host, line.message));
            return true;
        });
    }
}

/// However the dates are shown.
void forEachListed(EventList &list, const std::function<void(const std::string &event)> &handle) {
    for (std::size_t row = 0; row < list.size(); ++row) {
        handle(joined(std::to_string(list.momentHeld(row).value_or(0)),
                      list.priority(row).value_or(""), list.host(row).value_or(""),
                      list.message(row).value_or("")));
    }
}

/// A million events as texts would take more memory than what is examined.
using Hashes = std::vector<std::size_t>;

std::size_t hashOf(const std::string &event) {
    return std::hash<std::string>{}(event);
}

Hashes onlyIn(const Hashes &these, const Hashes &those) {
    Hashes result;
    std::ranges::set_difference(these, those, std::back_inserter(result));
    return result;
}

bool isIn(const std::vector<TimeSpan> &spans, const std::string &event) {
    const std::int64_t moment = std::strtoll(event.c_str(), nullptr, 10);
    return std::ranges::any_of(spans, [moment](const TimeSpan &span) {
        return moment >= span.first && moment <= span.last;
    });
}

/// Tells those that are not in the log apart, and finds one.
void look(EventList &list, const Hashes &missing, const Hashes &tooMany,
          const std::vector<TimeSpan> &unstored, Comparison &result) {
    forEachListed(list, [&](const std::string &event) {
        if (!std::ranges::binary_search(tooMany, hashOf(event))) {
            return;
        }
        const bool wasFull = isIn(unstored, event);
        ++(wasFull ? result.unstored : result.tooMany);
        result.example = wasFull ? result.example : event;
    });
    forEachLogged([&](const std::string &event) {
        result.example =
            std::ranges::binary_search(missing, hashOf(event)) ? event : result.example;
    });
}

}  // namespace

Comparison compare(EventList &list, const std::vector<TimeSpan> &unstored) {
    Hashes logged;
    Hashes listed;
    forEachLogged([&](const std::string &event) { logged.push_back(hashOf(event)); });
    forEachListed(list, [&](const std::string &event) { listed.push_back(hashOf(event)); });
    std::ranges::sort(logged);
    std::ranges::sort(listed);
    const Hashes missing = onlyIn(logged, listed);
    const Hashes tooMany = onlyIn(listed, logged);
    Comparison result{.logged = logged.size(), .missing = missing.size()};
    if (!missing.empty() || !tooMany.empty()) {
        look(list, missing, tooMany, unstored, result);
    }
    return result;
}

}  // namespace quorbel::soak
