#include "platform/KeyedArchive.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <variant>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

/// Whatever can be read can be written, and is then read as the same. Compared as archives, since
/// a value that holds a NaN does not equal itself.
int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    using namespace quorbel;  // NOLINT(google-build-using-namespace)
    const auto first = readKeyedArchive({reinterpret_cast<const char *>(bytes), size});
    if (const Value *value = std::get_if<Value>(&first)) {
        const std::string written = writeKeyedArchive(*value);
        const auto second = readKeyedArchive(written);
        const Value *again = std::get_if<Value>(&second);
        if (again == nullptr || writeKeyedArchive(*again) != written) {
            std::abort();
        }
    }
    return 0;
}
