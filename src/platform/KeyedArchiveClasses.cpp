#include "platform/KeyedArchiveClasses.h"

#include "platform/KeyedArchiveNames.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quorbel::archive {

namespace {

using Type = Value::Type;

constexpr auto kStringFields = std::to_array<ArchivedField>({{kStringContent, Type::kString}});
constexpr auto kNumberFields = std::to_array<ArchivedField>({
    {"NS.boolval", Type::kBoolean},
    {"NS.intval", Type::kInteger},
    {"NS.dblval", Type::kReal},
});
constexpr auto kDataFields = std::to_array<ArchivedField>({
    {"NS.data", Type::kData},
    {"NS.bytes", Type::kData},
});
constexpr auto kDateFields = std::to_array<ArchivedField>({{kDateTime, Type::kDate}});

}  // namespace

ClassKind kindOfClass(std::string_view name) {
    using Entry = std::pair<std::string_view, ClassKind>;
    static constexpr auto kKinds = std::to_array<Entry>({
        {"NSNull", ClassKind::kNull},
        {"NSDictionary", ClassKind::kDictionary},
        {"NSMutableDictionary", ClassKind::kDictionary},
        {"GSDictionary", ClassKind::kDictionary},
        {"GSMutableDictionary", ClassKind::kDictionary},
        {"NSArray", ClassKind::kArray},
        {"NSMutableArray", ClassKind::kArray},
        {"GSArray", ClassKind::kArray},
        {"GSMutableArray", ClassKind::kArray},
        {"NSString", ClassKind::kString},
        {"NSMutableString", ClassKind::kString},
        {"GSString", ClassKind::kString},
        {"GSMutableString", ClassKind::kString},
        {"NSNumber", ClassKind::kNumber},
        {"NSData", ClassKind::kData},
        {"NSMutableData", ClassKind::kData},
        {"NSDate", ClassKind::kDate},
    });
    const auto *const found = std::ranges::find(kKinds, name, &Entry::first);
    return found == kKinds.end() ? ClassKind::kForeign : found->second;
}

std::span<const ArchivedField> fieldsOfClass(ClassKind kind) {
    switch (kind) {
        case ClassKind::kString:
            return kStringFields;
        case ClassKind::kNumber:
            return kNumberFields;
        case ClassKind::kData:
            return kDataFields;
        case ClassKind::kDate:
            return kDateFields;
        default:
            return {};
    }
}

std::optional<Value> converted(Value content, Value::Type type) {
    if (content.type() == type || (type == Type::kInteger && content.type() == Type::kUnsigned)) {
        return content;
    }
    const std::int64_t *whole = content.integer();
    if (type == Type::kBoolean && whole != nullptr) {
        return *whole != 0;
    }
    const double *real = content.real();
    if ((type != Type::kReal && type != Type::kDate) || (whole == nullptr && real == nullptr)) {
        return std::nullopt;
    }
    const double number = real != nullptr ? *real : static_cast<double>(*whole);
    return type == Type::kReal ? Value(number) : Value(Date{number});
}

}  // namespace quorbel::archive
