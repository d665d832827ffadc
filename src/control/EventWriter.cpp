#include "control/EventWriter.h"

#include "common/Severity.h"
#include "control/VisibleText.h"
#include "core/SavedFilterText.h"
#include "platform/Number.h"

#include <cstdint>

namespace quorbel {

namespace {

void appendText(std::string &out, const LogLine &event) {
    for (const std::string_view field : {event.date, event.priority, event.host}) {
        appendVisible(out, field);
        out += ',';
    }
    appendVisible(out, event.message);
}

void appendMember(std::string &out, std::string_view name, std::string_view value) {
    out += out.ends_with('{') ? "\"" : ",\"";
    out += name;
    out += "\":";
    appendJson(out, value);
}

/// A date that is no number is no moment, and there is no "time".
void appendMoment(std::string &out, std::string_view date) {
    if (const auto seconds = readNumber<std::int64_t>(date)) {
        out += "\"time\":" + std::to_string(*seconds);
        appendMember(out, "date", momentText(*seconds));
    } else {
        appendMember(out, "date", date);
    }
}

void appendObject(std::string &out, const LogLine &event, EventRating rating) {
    const auto severity = classifyPriority(event.priority).shown;
    out += '{';
    appendMoment(out, event.date);
    appendMember(out, "priority", event.priority);
    appendMember(out, "severity", severityName(severity));
    appendMember(out, "rating", ratingName(rating));
    appendMember(out, "host", event.host);
    appendMember(out, "message", event.message);
    out += '}';
}

}  // namespace

void appendEvent(std::string &out, const LogLine &event, EventRating rating, EventForm form) {
    if (form == EventForm::kText) {
        appendText(out, event);
    } else {
        appendObject(out, event, rating);
    }
    out += '\n';
}

}  // namespace quorbel
