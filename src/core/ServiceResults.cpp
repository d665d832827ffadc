#include "core/ServiceResults.h"

namespace quorbel {

namespace {

constexpr std::size_t kFields = 6;

std::string textOf(const Value &value) {
    const std::string *text = value.string();
    return text != nullptr ? *text : std::string();
}

std::int64_t numberOf(const Value &value) {
    const std::int64_t *number = value.integer();
    return number != nullptr && *number > 0 ? *number : 0;
}

}  // namespace

std::optional<std::vector<ServiceResult>> serviceResults(const ServiceReport &report,
                                                         std::string_view property) {
    const Value *value = report.properties.find(property);
    if (value == nullptr || value->array() == nullptr) {
        return std::nullopt;
    }
    std::vector<ServiceResult> results;
    for (const Value &element : *value->array()) {
        const Array *fields = element.array();
        if (fields == nullptr || fields->size() < kFields) {
            return std::nullopt;
        }
        results.push_back({textOf((*fields)[0]), static_cast<std::uint64_t>(numberOf((*fields)[1])),
                           numberOf((*fields)[2]),
                           static_cast<std::uint64_t>(numberOf((*fields)[3])), textOf((*fields)[4]),
                           numberOf((*fields)[5])});
    }
    return results;
}

}  // namespace quorbel
