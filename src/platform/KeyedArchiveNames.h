#pragma once

#include <cstdint>
#include <string_view>

namespace quorbel::archive {

// The words of the keyed-archive format that its reader and its writer share.
inline constexpr std::string_view kNull = "$null";
inline constexpr std::string_view kObjects = "$objects";
inline constexpr std::string_view kTop = "$top";
inline constexpr std::string_view kRoot = "root";
inline constexpr std::string_view kClass = "$class";
inline constexpr std::string_view kClassName = "$classname";
inline constexpr std::string_view kClasses = "$classes";
inline constexpr std::string_view kCollectionKeys = "NS.keys";
inline constexpr std::string_view kCollectionObjects = "NS.objects";
inline constexpr std::string_view kStringContent = "NS.string";
inline constexpr std::string_view kDateTime = "NS.time";

// What those that write archives say besides.
inline constexpr std::string_view kVersion = "$version";
inline constexpr std::int64_t kVersionNumber = 100000;
inline constexpr std::string_view kArchiver = "$archiver";
inline constexpr std::string_view kArchiverName = "NSKeyedArchiver";
inline constexpr std::string_view kObjectClass = "NSObject";
inline constexpr std::string_view kArrayClass = "NSArray";
inline constexpr std::string_view kDictionaryClass = "NSDictionary";

}  // namespace quorbel::archive
