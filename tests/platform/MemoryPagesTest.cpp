#include "platform/MemoryPages.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace quorbel {
namespace {

TEST(MemoryPagesTest, MakesThosePagesThatLieWithin) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void *const memory =
        mmap(nullptr, 8 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto *const bytes = static_cast<char *>(memory);
    if (madvise(bytes + 7 * page, page, MADV_POPULATE_WRITE) != 0) {
        GTEST_SKIP() << "This kernel cannot.";
    }
    bytes[3 * page] = 'x';
    // From within the second page to within the sixth.
    makePages(bytes + page + 1, 4 * page);
    std::vector<unsigned char> there(8);
    ASSERT_EQ(mincore(memory, 8 * page, there.data()), 0);
    for (unsigned char &is : there) {
        is &= 1U;
    }
    EXPECT_EQ(there, (std::vector<unsigned char>{0, 0, 1, 1, 1, 0, 0, 1}));
    EXPECT_EQ(bytes[3 * page], 'x');
    makePages(bytes + 1, page);
    makePages(nullptr, 0);
    munmap(memory, 8 * page);
}

}  // namespace
}  // namespace quorbel
