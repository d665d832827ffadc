#include "control/EventArguments.h"

#include "core/SpanMoments.h"

#include <ctime>

namespace quorbel {

std::optional<EventArguments> readEventArguments(int count, char **values,
                                                 const std::vector<Option> &own) {
    QueryOptions filter;
    bool asJson = false;
    std::vector<Option> options = filter.options();
    options.push_back(flag("json", 'j', asJson));
    options.insert(options.end(), own.begin(), own.end());
    const auto texts = readOptions(count, values, options);
    if (!texts) {
        return std::nullopt;
    }
    for (const std::string &text : *texts) {
        filter.addText(text);
    }
    const auto query = filter.query();
    if (!query) {
        return std::nullopt;
    }
    return EventArguments{queryAt(*query, std::time(nullptr)),
                          asJson ? EventForm::kJson : EventForm::kText};
}

}  // namespace quorbel
