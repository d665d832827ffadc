#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace quorbel {
namespace {

struct DescriptorIoTest : ::testing::Test {
    testing::TemporaryFolder folder;
};

TEST_F(DescriptorIoTest, OpensRegularFilesOnly) {
    folder.write("file", "text");
    ASSERT_EQ(::mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("/dev/zero", (folder.path() / "device").c_str()), 0);
    EXPECT_TRUE(openRegular(folder.path() / "file", O_RDONLY).isOpen());
    // Nobody writes to the FIFO: waiting for that would never end.
    for (const char *name : {"fifo", "device", "."}) {
        errno = 0;
        EXPECT_FALSE(openRegular(folder.path() / name, O_RDONLY).isOpen()) << name;
        EXPECT_EQ(errno, EINVAL) << name;
    }
    EXPECT_FALSE(openRegular(folder.path() / "missing", O_RDONLY).isOpen());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(DescriptorIoTest, CreatesWithTheMode) {
    const UniqueFd file = openRegular(folder.path() / "new", O_WRONLY | O_CREAT, 0600);
    struct stat status {};
    ASSERT_TRUE(file.isOpen());
    ASSERT_EQ(::fstat(file.get(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_NE(::fcntl(file.get(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(DescriptorIoTest, SaysHowMuchWasWritten) {
    const UniqueFd file = openRegular(folder.path() / "file", O_WRONLY | O_CREAT, 0600);
    EXPECT_EQ(writeFully(file.get(), "all of it"), 9U);
    EXPECT_EQ(readFile(folder.path() / "file"), "all of it");

    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC), 0);
    const UniqueFd output(ends[0]);
    const UniqueFd input(ends[1]);
    const auto room = static_cast<std::size_t>(::fcntl(input.get(), F_GETPIPE_SZ));
    EXPECT_EQ(writeFully(input.get(), std::string(room + 1000, 'x')), room);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(writeFully(-1, "nowhere"), 0U);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(DescriptorIoTest, ReadsWhatThereIs) {
    folder.write("file", "text");
    const UniqueFd file = openRegular(folder.path() / "file", O_RDONLY);
    std::array<char, 16> bytes{};
    EXPECT_EQ(readSome(file.get(), bytes.data(), 3), 3);
    EXPECT_EQ(readSome(file.get(), bytes.data() + 3, bytes.size() - 3), 1);
    EXPECT_EQ(std::string(bytes.data(), 4), "text");
    EXPECT_EQ(readSome(file.get(), bytes.data(), bytes.size()), 0);
    EXPECT_EQ(readSome(-1, bytes.data(), bytes.size()), -1);
}

}  // namespace
}  // namespace quorbel
