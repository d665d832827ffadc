#include "events/find/LikeRecord.h"

#include "common/Facility.h"
#include "common/IpAddress.h"
#include "common/Severity.h"
#include "events/find/LikePattern.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace quorbel {

namespace {

constexpr std::string_view kAny = "Any";

std::string_view facilityOf(std::string_view priority) {
    const std::string_view facility = priority.substr(0, priority.find('.'));
    return std::ranges::find(kFacilityNames, facility) != kFacilityNames.end() ? facility : kAny;
}

std::string_view severityOf(std::string_view priority) {
    const std::size_t severity = classifyPriority(priority).shown;
    return severity == kUnknownClass ? kAny : kSeverityClasses[severity].name;
}

/// Short enough for a list of them.
QString nameFor(const QString &message) {
    constexpr qsizetype kLongest = 40;
    const QString text = message.left(10 * kLongest).simplified();
    if (text.size() <= kLongest) {
        return text.isEmpty() ? QStringLiteral("Messages like one") : text;
    }
    qsizetype end = text.lastIndexOf(u' ', kLongest);
    if (end <= 0) {
        end = kLongest - (text[kLongest - 1].isHighSurrogate() ? 1 : 0);
    }
    return text.left(end) + QChar(0x2026);
}

}  // namespace

Dictionary likeRecord(const QString &priority, const QString &host, const QString &message) {
    const std::string priorityText = priority.toStdString();
    const auto address = IpAddress::parse(host.toStdString());
    const char *const wholeAddress = address && address->isV4() ? "32" : "128";
    Dictionary record{{"Name", nameFor(message).toStdString()},
                      {"IP", address ? address->text() : "0.0.0.0"},
                      {"Message", likeWildcards(message).toStdString()},
                      {"Mask", address ? wholeAddress : "0"},
                      {"Facility", std::string(facilityOf(priorityText))},
                      {"Severity", std::string(severityOf(priorityText))}};
    if (!address && !host.isEmpty()) {
        record.append("Host", host.toStdString());
    }
    return record;
}

}  // namespace quorbel
