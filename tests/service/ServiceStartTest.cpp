#include "ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::ServiceProcess;

struct ServiceStartTest : testing::ServiceFixture {};

TEST_F(ServiceStartTest, RefusesAFolderInWhichAnotherServiceWorks) {
    auto service = start();
    ServiceProcess other({folder.path(), "", {"--port", "0"}});
    EXPECT_FALSE(other.isListening());
    EXPECT_EQ(other.waitForEnd(), 1);
    EXPECT_EQ(other.journal(),
              "<3>Another service works in " + folder.path().string() + " already\n");
    // Nothing is left of one that was ended in the middle.
    service->kill();
    EXPECT_EQ(start()->terminate(), 0);
}

TEST_F(ServiceStartTest, MakesItsFolder) {
    ServiceProcess service({folder.path() / "new" / "library", "", {"--port", "0"}});
    EXPECT_TRUE(service.isListening());
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "new" / "library"));
    EXPECT_THAT(service.journal(), Not(HasSubstr("cannot be")));
}

}  // namespace
}  // namespace quorbel
