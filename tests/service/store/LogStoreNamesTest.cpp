#include "platform/Files.h"
#include "service/store/LogStore.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <future>
#include <string>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::TemporaryFolder;

constexpr std::int64_t kMonday = 1700000000;  // 2023-11-14, in UTC
constexpr const char *kName = "2023-11-14.log";

/// Something that is no regular file stands where today's log file belongs.
class LogStoreNamesTest : public ::testing::Test {
protected:
    /// More than any buffer behind a name holds.
    void expectThatNothingWaits() {
        ::testing::internal::CaptureStderr();
        auto done = std::async(std::launch::async, [this] {
            LogStore store(m_folder.path());
            store.prepare();
            std::size_t notStored = 0;
            for (int i = 0; i < 100; ++i) {
                notStored += store.append(std::string(4000, 'm') + "\r\n", kMonday, true).notStored;
            }
            return notStored;
        });
        const bool isDone = done.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
        // Somebody who reads lets a store go that waits.
        while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            readFifo();
        }
        const std::string journal = ::testing::internal::GetCapturedStderr();
        EXPECT_TRUE(isDone);
        EXPECT_EQ(done.get(), 100U);
        EXPECT_THAT(journal, HasSubstr("Events cannot be stored in "));
    }
    void readFifo() {
        const UniqueFd fifo(::open(path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        std::string buffer(65536, '\0');
        [[maybe_unused]] const ssize_t count = ::read(fifo.get(), buffer.data(), buffer.size());
    }
    [[nodiscard]] std::filesystem::path path() const { return m_folder.path() / kName; }

    TemporaryFolder m_folder;
};

TEST_F(LogStoreNamesTest, AFifoKeepsNobodyWaiting) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    expectThatNothingWaits();
}

TEST_F(LogStoreNamesTest, AFolderKeepsNobodyWaiting) {
    std::filesystem::create_directory(path());
    expectThatNothingWaits();
}

TEST_F(LogStoreNamesTest, ADeviceTakesNoEvents) {
    if (mknod(path().c_str(), S_IFCHR | 0600, makedev(1, 3)) != 0) {  // that of /dev/null
        GTEST_SKIP() << "only root can make a device";
    }
    expectThatNothingWaits();
}

}  // namespace
}  // namespace quorbel
