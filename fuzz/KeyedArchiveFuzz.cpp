#include "Fuzz.h"
#include "platform/KeyedArchive.h"

#include <string>
#include <variant>

/// Whatever can be read can be written, and is then read as the same. Compared as archives, since
/// a value that holds a NaN does not equal itself.
void quorbel::tryInput(std::string_view bytes) {
    const auto first = readKeyedArchive(bytes);
    if (const Value *value = std::get_if<Value>(&first)) {
        const std::string written = writeKeyedArchive(*value);
        const auto second = readKeyedArchive(written);
        const Value *again = std::get_if<Value>(&second);
        require(again != nullptr, "what was written is read");
        require(writeKeyedArchive(*again) == written, "it is the same again");
    }
}
