#include "core/LogFields.h"

#include "platform/Text.h"

namespace quorbel {

EventFields fieldsOf(const LogLine &line) {
    // The separators are ASCII, so that what is UTF-8 as a whole is so field by field.
    if (line.isAscii || isUtf8({line.date.data(), line.message.end()})) {
        return {line.date, line.priority, line.host, line.message, {}};
    }
    EventFields fields;
    if (!isUtf8(line.date)) {
        return fields;
    }
    fields.date = line.date;
    if (!isUtf8(line.priority)) {
        return fields;
    }
    fields.priority = line.priority;
    if (!isUtf8(line.host)) {
        return fields;
    }
    fields.host = line.host;
    if (isUtf8(line.message)) {
        fields.message = line.message;
    }
    return fields;
}

}  // namespace quorbel
