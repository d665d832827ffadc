#include "core/AppDelegate.h"
#include "core/LastSave.h"
#include "core/LibraryAccess.h"
#include "support/PrivateBus.h"
#include "support/ScopedVariable.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorbel {
namespace {

using testing::waitUntil;

TEST(LastSaveTest, RemembersWhetherTheLastOneWasTaken) {
    LastSave last;
    EXPECT_FALSE(last.problem());
    last.end(last.begin(), "The disk is full");
    EXPECT_EQ(last.problem(), "The disk is full");
    last.end(last.begin(), "The settings are stored. The filter \"a\" can never match");
    EXPECT_FALSE(last.problem());
    last.end(last.begin(), std::nullopt);
    EXPECT_EQ(last.problem(), "");
    last.end(last.begin(), "OK");
    EXPECT_FALSE(last.problem());
}

// Answers may overtake one another: a service that was only starting, a bus that hung.
TEST(LastSaveTest, ALateAnswerChangesNothing) {
    LastSave last;
    const auto first = last.begin();
    const auto second = last.begin();
    last.end(second, "OK");
    last.end(first, std::nullopt);
    EXPECT_FALSE(last.problem());
}

TEST(LastSaveTest, FollowsWhatTheServiceRepliesToASave) {
    const testing::PrivateBus bus;
    AppDelegate delegate;
    {
        testing::ServiceStandIn service;
        service.setReply("No space left on device");
        delegate.saveSettings({});
        EXPECT_TRUE(waitUntil([&] { return delegate.lastSave.problem().has_value(); }));
        EXPECT_EQ(delegate.lastSave.problem(), "No space left on device");
        service.setReply("OK");
        delegate.saveSettings({});
        EXPECT_TRUE(waitUntil([&] { return !delegate.lastSave.problem(); }));
        service.setReply("There is no such command");
        delegate.setPipe({{"command", "update"}});
        ASSERT_EQ(service.waitForCommands(3).size(), 3U);
        EXPECT_FALSE(delegate.lastSave.problem());  // that was none
    }
    delegate.saveSettings({});
    EXPECT_TRUE(waitUntil([&] { return delegate.lastSave.problem() == ""; }));
}

/// Somebody who is neither root nor in a group, while the object lives.
class Stranger {
public:
    Stranger() { EXPECT_EQ(seteuid(65534), 0); }
    ~Stranger() { EXPECT_EQ(seteuid(0), 0); }
    Stranger(const Stranger &) = delete;
    Stranger &operator=(const Stranger &) = delete;
};

TEST(LibraryAccessTest, TellsAClosedFolderFromAMissingOne) {
    testing::TemporaryFolder folder;
    const testing::ScopedVariable library("QUORBEL_LIBRARY", folder.path().string());
    EXPECT_EQ(libraryAccess(), LibraryAccess::kOpen);
    EXPECT_FALSE(hasSettingsDocument());
    folder.write("Quorbel.ini", "");
    EXPECT_TRUE(hasSettingsDocument());
    const testing::ScopedVariable missing("QUORBEL_LIBRARY", (folder.path() / "no").string());
    EXPECT_EQ(libraryAccess(), LibraryAccess::kMissing);
    EXPECT_FALSE(hasSettingsDocument());
}

TEST(LibraryAccessTest, SaysThatOthersMayNotLook) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root becomes somebody else";
    }
    const testing::TemporaryFolder folder;
    const testing::ScopedVariable library("QUORBEL_LIBRARY", folder.path().string());
    chmod(folder.path().c_str(), 0700);
    const Stranger stranger;
    EXPECT_EQ(libraryAccess(), LibraryAccess::kClosed);
    EXPECT_TRUE(hasSettingsDocument());  // for all that this user knows
}

}  // namespace
}  // namespace quorbel
