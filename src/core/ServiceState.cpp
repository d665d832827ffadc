#include "core/ServiceState.h"

#include <algorithm>
#include <limits>

namespace quorbel {

namespace {

std::uint64_t countOf(const Value &value) {
    if (const std::int64_t *integer = value.integer()) {
        return *integer < 0 ? 0 : static_cast<std::uint64_t>(*integer);
    }
    const std::uint64_t *large = value.unsignedInteger();
    return large == nullptr ? 0 : *large;
}

std::string textOf(const Value &value) {
    const std::string *text = value.string();
    return text == nullptr ? std::string() : *text;
}

std::int64_t secondsOf(const Value &value) {
    const std::int64_t *seconds = value.integer();
    return seconds == nullptr ? 0 : *seconds;
}

/// Calls `take(fields)` for each struct of at least `size` fields.
template <typename Take>
void forEachStruct(const Dictionary &properties, std::string_view name, std::size_t size,
                   Take take) {
    const Value *value = properties.find(name);
    const Array *structs = value == nullptr ? nullptr : value->array();
    if (structs == nullptr) {
        return;
    }
    for (const Value &element : *structs) {
        if (const Array *fields = element.array(); fields != nullptr && fields->size() >= size) {
            take(*fields);
        }
    }
}

}  // namespace

std::uint64_t ServiceReport::counter(std::string_view name) const {
    const auto found = std::ranges::find(counters, name, [](const auto &one) { return one.first; });
    return found == counters.end() ? 0 : found->second;
}

ServiceReport readReport(const Dictionary &properties) {
    ServiceReport report;
    report.properties = properties;
    if (const Value *version = properties.find("Version")) {
        report.version = textOf(*version);
    }
    if (const Value *since = properties.find("Since")) {
        report.since = secondsOf(*since);
    }
    const Value *counters = properties.find("Counters");
    if (counters != nullptr && counters->dictionary() != nullptr) {
        for (const auto &[name, count] : *counters->dictionary()) {
            report.counters.emplace_back(name, countOf(count));
        }
    }
    forEachStruct(properties, "Listeners", 2, [&](const Array &fields) {
        constexpr std::uint64_t kLargest = std::numeric_limits<std::uint16_t>::max();
        report.listeners.push_back({textOf(fields[0]), static_cast<std::uint16_t>(std::min(
                                                           countOf(fields[1]), kLargest))});
    });
    forEachStruct(properties, "Refusals", 5, [&](const Array &fields) {
        report.refusals.push_back({textOf(fields[0]), textOf(fields[1]), textOf(fields[2]),
                                   secondsOf(fields[3]), countOf(fields[4])});
    });
    return report;
}

ServiceState::Watch::Watch(ServiceState &state, std::function<void()> onAnswer)
    : m_state(state), m_onAnswer(std::move(onAnswer)) {
    m_state.m_watches.push_back(this);
    if (m_state.m_watches.size() == 1 && m_state.m_onWatchChange) {
        m_state.m_onWatchChange();
    }
}

ServiceState::Watch::~Watch() {
    std::erase(m_state.m_watches, this);
    if (m_state.m_watches.empty() && m_state.m_onWatchChange) {
        m_state.m_onWatchChange();
    }
}

void ServiceState::take(const StatusAnswer &answer) {
    m_outcome = answer.outcome;
    m_report = readReport(answer.properties);
    // Whoever hears of it may begin or end to watch.
    const std::vector<Watch *> told = m_watches;
    for (Watch *watch : told) {
        if (std::ranges::find(m_watches, watch) != m_watches.end()) {
            watch->m_onAnswer();
        }
    }
}

void ServiceState::forget() {
    m_outcome.reset();
    m_report = {};
}

}  // namespace quorbel
