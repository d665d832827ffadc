#pragma once

#include "platform/Value.h"

#include <string>
#include <string_view>
#include <variant>

namespace quorbel {

/// Why bytes are no readable archive: one line for a log, without a line end.
struct ArchiveError {
    std::string reason;
};

/// Decodes a binary keyed archive and returns its root value.
///
/// An object of a class that is not known here becomes a ForeignObject. Inside a container that
/// stands in one of its fields in place, a reference to an object is a ForeignObject without
/// classes, whose only field holds what is referred to. References to nil in an array or a
/// dictionary are left out, of equal keys the first one stays, and an unpaired surrogate becomes
/// U+FFFD. Containers can be nested 512 deep.
///
/// Time and memory are bounded by a small multiple of the input's size, whatever the bytes are:
/// sharing that unfolds too far, cycles and deep nesting are errors. The value takes less than 6
/// times the input and 48 MiB.
std::variant<Value, ArchiveError> readKeyedArchive(std::string_view bytes);

/// Encodes a value as a binary keyed archive that any unarchiver of the format reads. Bytes of a
/// text that are not UTF-8 become U+FFFD.
std::string writeKeyedArchive(const Value &root);

}  // namespace quorbel
