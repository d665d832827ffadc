#include "platform/MemoryPages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <memory>

namespace quorbel {

void makePages(void *memory, std::size_t size) {
#ifdef MADV_POPULATE_WRITE
    static const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    if (std::align(pageSize, pageSize, memory, size) != nullptr) {
        ::madvise(memory, size / pageSize * pageSize, MADV_POPULATE_WRITE);
    }
#endif
}

}  // namespace quorbel
