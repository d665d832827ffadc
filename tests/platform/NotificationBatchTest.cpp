#include "platform/bus/NotificationBatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using Extents = std::vector<NotificationBatch::Extent>;

constexpr int kAllSeals = F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW;

/// A memfd with these bytes.
UniqueFd file(std::string_view bytes, int seals = kAllSeals) {
    UniqueFd made(::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    EXPECT_EQ(::write(made.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_EQ(::fcntl(made.get(), F_ADD_SEALS, seals), 0);
    return made;
}

bool isTaken(const UniqueFd &file, const Extents &extents) {
    return NotificationBatch::read(file.get(), extents).has_value();
}

TEST(NotificationBatchTest, IsReadAsItWasWritten) {
    const std::string sets = "1,a,b,c\r\n2,a,b,c\r\n";
    const std::string removes = "3,a,b,c\r\n";
    const UniqueFd written = NotificationBatch::write({{NotificationType::kSet, sets},
                                                       {NotificationType::kRemove, removes},
                                                       {NotificationType::kSet, removes}});
    ASSERT_TRUE(written.isOpen());
    auto read = NotificationBatch::read(
        written.get(), {{"Set", sets.size()}, {"Remove", removes.size()}, {"Set", removes.size()}});
    ASSERT_TRUE(read);
    const NotificationBatch moved = *std::move(read);
    ASSERT_EQ(moved.runs().size(), 3U);
    EXPECT_EQ(moved.runs()[0].type, NotificationType::kSet);
    EXPECT_EQ(moved.runs()[0].lines, sets);
    EXPECT_EQ(moved.runs()[1].type, NotificationType::kRemove);
    EXPECT_EQ(moved.runs()[1].lines, removes);
    EXPECT_EQ(moved.runs()[2].lines, removes);
}

TEST(NotificationBatchTest, NobodyCanChangeItAnyMore) {
    const UniqueFd written = NotificationBatch::write({{NotificationType::kSet, "1,a,b,c\r\n"}});
    EXPECT_EQ(::pwrite(written.get(), "2", 1, 0), -1);
    EXPECT_EQ(::ftruncate(written.get(), 0), -1);
    EXPECT_EQ(::fcntl(written.get(), F_ADD_SEALS, F_SEAL_WRITE), -1);
}

TEST(NotificationBatchTest, IsRefusedWhileItsSenderCouldChangeIt) {
    const std::string_view line = "1,a,b,c\r\n";
    const Extents whole{{"Set", line.size()}};
    EXPECT_TRUE(isTaken(file(line), whole));
    EXPECT_FALSE(isTaken(file(line, F_SEAL_SHRINK | F_SEAL_GROW), whole));
    EXPECT_FALSE(isTaken(file(line, F_SEAL_WRITE | F_SEAL_GROW), whole));
    EXPECT_FALSE(isTaken(file(line, F_SEAL_WRITE | F_SEAL_SHRINK), whole));
    int pipe[2] = {-1, -1};
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    const UniqueFd reading(pipe[0]);
    const UniqueFd writing(pipe[1]);
    EXPECT_FALSE(isTaken(reading, whole));
    EXPECT_FALSE(isTaken(UniqueFd(), whole));
}

TEST(NotificationBatchTest, IsRefusedWhenTheRunsAreNotItsBytes) {
    const std::string_view lines = "1,a,b,c\r\n2,a,b,c\r\n";
    const UniqueFd sealed = file(lines);
    EXPECT_TRUE(isTaken(sealed, {{"Set", 9}, {"Remove", 9}}));
    EXPECT_FALSE(isTaken(sealed, {}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 9}}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 19}}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 9}, {"Set", 10}}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 8}, {"Set", 10}}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 18}, {"Set", 0}}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 0}, {"Set", 18}}));
    EXPECT_FALSE(isTaken(sealed, {{"set", 18}}));
    // As a negative number is read, and one that would wrap around.
    EXPECT_FALSE(isTaken(sealed, {{"Set", UINT64_MAX}}));
    EXPECT_FALSE(isTaken(sealed, {{"Set", 9}, {"Set", UINT64_MAX - 8}, {"Set", 18}}));
}

TEST(NotificationBatchTest, IsRefusedWithoutTheLastLinesEnd) {
    EXPECT_FALSE(isTaken(file("1,a,b,c"), {{"Set", 7}}));
    EXPECT_FALSE(isTaken(file("1,a,b,c\r\n2,a"), {{"Set", 9}, {"Set", 3}}));
}

TEST(NotificationBatchTest, IsRefusedWhenItIsEmptyOrTooLarge) {
    EXPECT_FALSE(isTaken(file(""), {{"Set", 0}}));
    EXPECT_FALSE(isTaken(file(""), {}));
    std::string large(NotificationBatch::kMostBytes, '\n');
    EXPECT_TRUE(isTaken(file(large), {{"Set", large.size()}}));
    large += '\n';
    EXPECT_FALSE(isTaken(file(large), {{"Set", large.size()}}));
}

}  // namespace
}  // namespace quorbel
