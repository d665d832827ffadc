#include "core/SettingsCycle.h"
#include "platform/KeyedArchive.h"

#include <gtest/gtest.h>

#include <optional>

namespace quorbel {
namespace {

TEST(SettingsCycleTest, KeepsWhatThePageDoesNotOwn) {
    const Dictionary stored{{"ours", 1}, {"unknown", Data{"\x01\x02"}}, {"gone", "text"}};
    SettingsCycle cycle;
    EXPECT_TRUE(cycle.load(writeKeyedArchive(stored)));
    EXPECT_TRUE(cycle.exists());
    cycle.set("ours", 2);
    cycle.setText("gone", std::nullopt);
    cycle.setText("added", "new");
    EXPECT_EQ(cycle.working(),
              (Dictionary{{"ours", 2}, {"unknown", Data{"\x01\x02"}}, {"added", "new"}}));
}

TEST(SettingsCycleTest, WithoutADocumentHoldsOnlyWhatThePageSets) {
    SettingsCycle cycle;
    EXPECT_TRUE(cycle.load(writeKeyedArchive(Dictionary{{"old", 1}})));
    EXPECT_FALSE(cycle.load(std::nullopt));
    EXPECT_FALSE(cycle.exists());
    cycle.set("textInterval", 0);
    EXPECT_EQ(cycle.working(), (Dictionary{{"textInterval", 0}}));
}

}  // namespace
}  // namespace quorbel
