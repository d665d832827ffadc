// What libFuzzer calls (https://llvm.org/docs/LibFuzzer.html).

#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    quorbel::tryInput({reinterpret_cast<const char *>(bytes), size});
    return 0;
}
