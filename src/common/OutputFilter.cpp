#include "common/OutputFilter.h"

#include "common/ConfigurationValues.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace quorbel {

namespace {

enum Condition : std::size_t { kHosts, kFacility, kSeverity, kMessage };

bool isAlike(std::string_view one, std::string_view other) {
    std::string first;
    std::string second;
    foldCase(one, first);
    foldCase(other, second);
    return first == second;
}

std::string unknown(std::string_view what, std::string_view text,
                    std::span<const std::string_view> names) {
    std::string problem = "there is no " + std::string(what) + ' ' + shownValue(text) + " (";
    for (const std::string_view name : names) {
        problem += problem.ends_with('(') ? "" : ", ";
        problem += name;
    }
    return problem + ')';
}

std::optional<std::uint8_t> severityOf(std::string_view text) {
    for (std::uint8_t i = 0; i < kSeverityCount; ++i) {
        if (isAlike(kSeverityClasses[i].name, text) || isAlike(kSeverityClasses[i].label, text)) {
            return i;
        }
    }
    return std::nullopt;
}

std::string unknownSeverity(std::string_view text) {
    std::array<std::string_view, kSeverityCount> names;
    std::transform(kSeverityClasses.begin(), kSeverityClasses.begin() + kSeverityCount,
                   names.begin(), [](const SeverityClass &one) { return one.label; });
    return unknown("severity", text, names);
}

}  // namespace

std::optional<std::string> OutputFilter::setHosts(std::string_view text) {
    std::vector<HostPart> hosts;
    for (std::string_view part : listedIn(text)) {
        const bool isExcluded = part.starts_with('!');
        part = isExcluded ? trimmed(part.substr(1)) : part;
        const auto network = AddressNetwork::parse(part);
        if (part.empty()) {
            return "no host is named behind a \"!\"";
        }
        if (!network && part.find('/') != std::string_view::npos) {
            return shownValue(part) + " is no network";
        }
        hosts.push_back({network, WildcardPattern(part), isExcluded});
    }
    m_texts[kHosts] = text;
    m_hosts = std::move(hosts);
    m_namesHosts = std::ranges::any_of(m_hosts, [](const auto &part) { return !part.isExcluded; });
    return std::nullopt;
}

std::optional<std::string> OutputFilter::setFacility(std::string_view text) {
    std::uint32_t facilities = 0;
    for (const std::string_view part : listedIn(text)) {
        const auto *const found = std::ranges::find_if(
            kFacilityNames, [part](std::string_view name) { return isAlike(name, part); });
        if (found == kFacilityNames.end()) {
            return unknown("facility", part, kFacilityNames);
        }
        facilities |= std::uint32_t{1} << static_cast<unsigned>(found - kFacilityNames.begin());
    }
    m_texts[kFacility] = text;
    m_facilities = facilities == 0 ? kAllFacilities : facilities;
    return std::nullopt;
}

std::optional<std::string> OutputFilter::setSeverity(std::string_view text) {
    const auto severity = text.empty() ? std::optional(kLeastSeverity) : severityOf(text);
    if (!severity) {
        return unknownSeverity(text);
    }
    m_texts[kSeverity] = text;
    m_severity = *severity;
    return std::nullopt;
}

std::optional<std::string> OutputFilter::setMessage(std::string_view text) {
    m_texts[kMessage] = text;
    m_message.reset();
    if (!text.empty()) {
        m_message.emplace(text);
    }
    return std::nullopt;
}

bool OutputFilter::isEmpty() const {
    return m_hosts.empty() && meansAnyPriority() && (!m_message || m_message->matchesEverything());
}

bool OutputFilter::meansHost(std::string_view host) const {
    const auto address = IpAddress::parse(host);
    std::string folded;
    foldCase(host, folded);
    const auto isMeant = [&](const HostPart &part) {
        return part.network ? address && part.network->contains(*address)
                            : part.name.matches(folded);
    };
    bool isNamed = !m_namesHosts;
    for (const HostPart &part : m_hosts) {
        if (part.isExcluded && isMeant(part)) {
            return false;
        }
        isNamed = isNamed || (!part.isExcluded && isMeant(part));
    }
    return isNamed;
}

/// One that no message can have, which only somebody else can have written, is in no list.
bool OutputFilter::meansPriority(std::string_view priority) const {
    const std::size_t point = std::min(priority.find('.'), priority.size());
    const auto *const facility = std::ranges::find(kFacilityNames, priority.substr(0, point));
    const std::string_view name = priority.substr(std::min(point + 1, priority.size()));
    const auto *const severity =
        std::find_if(kSeverityClasses.begin(), kSeverityClasses.begin() + m_severity + 1,
                     [name](const auto &one) { return one.name == name; });
    return facility != kFacilityNames.end() &&
           (m_facilities >> static_cast<unsigned>(facility - kFacilityNames.begin()) & 1U) != 0 &&
           severity != kSeverityClasses.begin() + m_severity + 1;
}

bool OutputFilter::matches(const LogLine &line) const {
    if (!meansAnyPriority() && !meansPriority(line.priority)) {
        return false;
    }
    if (!m_hosts.empty() && !meansHost(line.host)) {
        return false;
    }
    if (!m_message) {
        return true;
    }
    std::string folded;
    foldCase(line.message, folded);
    return m_message->matches(folded);
}

}  // namespace quorbel
