#pragma once

#include "platform/Value.h"

#include <optional>
#include <span>
#include <string_view>

namespace quorbel::archive {

/// What the objects of a class mean to us.
enum class ClassKind { kForeign, kNull, kDictionary, kArray, kString, kNumber, kData, kDate };

/// By one of the names in a class's hierarchy; kForeign for a name that says nothing.
ClassKind kindOfClass(std::string_view name);

/// A field in which an object keeps the value that it stands for, and that value's type.
struct ArchivedField {
    std::string_view name;
    Value::Type type;
};

/// The fields to look for in an object that wraps a single value. Empty for the other kinds.
std::span<const ArchivedField> fieldsOfClass(ClassKind kind);

/// A field's content as the type that the field stands for: archivers store whole numbers as
/// integers whatever the field is. Nothing when it is something else.
std::optional<Value> converted(Value content, Value::Type type);

}  // namespace quorbel::archive
