#include "service/store/RetentionFixture.h"

#include <gmock/gmock.h>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::kDay;
using testing::keepErrors;
using testing::kMinute;
using testing::kNow;
using testing::line;
using RetentionClockTest = testing::RetentionFixture;

// Otherwise, nothing would be due until the time that the clock had shown.
TEST_F(RetentionClockTest, FollowsAClockThatIsSetBack) {
    const std::string name = logFileName(kNow);
    now = kNow + 1000 * kDay;
    folder.write(name, line(kNow, "Debug", "kept for ever"));
    start(keepErrors(10, 0));
    pass();
    now = kNow;
    pass();
    store.append(line(kNow, "Error", "goes"), kNow, false);
    now = kNow + 11 * kMinute;
    pass();
    EXPECT_EQ(content(name), line(kNow, "Debug", "kept for ever"));
}

// Otherwise everything would be gone the minute after.
TEST_F(RetentionClockTest, WaitsWhileAClockThatJumpsAheadIsNotSynchronised) {
    constexpr std::string_view kWaits = "Old events are kept: the clock is 43800 hours ahead of ";
    const std::string name = logFileName(kNow);
    const std::string event = line(kNow, "Error", "kept");
    synchronised = false;
    folder.write(name, event);
    ::testing::internal::CaptureStderr();
    start(keepErrors(30, 2));
    pass();
    now = kNow + 5 * 365 * kDay;
    pass();
    // What arrives has the clock's time and does not speak for it.
    store.append(line(now, "Error", "new"), now, false);
    pass();
    EXPECT_EQ(content(name), event);
    now = kNow + kMinute;
    running = running + kMinute;
    pass();
    now = kNow + 31 * kDay;
    running = running + 31 * kDay;
    pass();
    const std::string journal = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(content(name), "(no file)");
    EXPECT_THAT(journal, HasSubstr(kWaits));
    EXPECT_EQ(journal.find(kWaits), journal.rfind(kWaits));
    EXPECT_THAT(journal, HasSubstr("Old events are removed again"));
}

TEST_F(RetentionClockTest, RemembersAcrossStartsWhatTheClockWas) {
    const std::string name = logFileName(kNow);
    const std::string event = line(kNow, "Error", "kept");
    synchronised = false;
    folder.write(name, event);
    start(keepErrors(30, 2));
    pass();
    retention.reset();
    now = kNow + 5 * 365 * kDay;
    folder.write(logFileName(now), line(now, "Error", "new"));
    running = 5;
    start(keepErrors(30, 2));
    pass();
    EXPECT_EQ(content(name), event);
    synchronised = true;
    pass();
    EXPECT_EQ(content(name), "(no file)");
}

}  // namespace
}  // namespace quorbel
