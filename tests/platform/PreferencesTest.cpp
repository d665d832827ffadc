#include "platform/Preferences.h"
#include "support/ConfigurationFolder.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quorbel {
namespace {

using testing::ConfigurationFolder;
using ::testing::Optional;
using testing::ScopedVariable;
using testing::TemporaryFolder;

class PreferencesTest : public ::testing::Test {
protected:
    void store(std::string_view text) { m_folder.write("Quorbel.ini", text); }

    ConfigurationFolder m_folder;
};

TEST_F(PreferencesTest, ReadsTexts) {
    store("AppName=Quorbel\nempty=\r\n  spaced key \t=  a = b  \nAppName=later\nlast=no line end");
    EXPECT_THAT(preference("AppName"), Optional(std::string("Quorbel")));
    EXPECT_THAT(preference("empty"), Optional(std::string()));
    EXPECT_THAT(preference("spaced key"), Optional(std::string("a = b")));
    EXPECT_THAT(preference("last"), Optional(std::string("no line end")));
    EXPECT_EQ(preference("absent"), std::nullopt);
    EXPECT_EQ(preference("appname"), std::nullopt);
}

TEST_F(PreferencesTest, PassesOverRemarksAndHeadings) {
    store("# a=1\n;b=2\n[c=3]\n\nno equals sign\n=4\nd=5\n");
    for (const char *key : {"a", "# a", "b", ";b", "c", "[c", "no equals sign"}) {
        EXPECT_EQ(preference(key), std::nullopt) << key;
    }
    EXPECT_EQ(integerPreference("d"), 5);
}

TEST_F(PreferencesTest, ReadsIntegers) {
    store("a=2\nb=-7\nc=2x\nd=\ne=two\nf=9223372036854775807\ng=9223372036854775808\nh= 3 \n");
    EXPECT_EQ(integerPreference("a"), 2);
    EXPECT_EQ(integerPreference("b"), -7);
    EXPECT_EQ(integerPreference("c"), 0);
    EXPECT_EQ(integerPreference("d"), 0);
    EXPECT_EQ(integerPreference("e"), 0);
    EXPECT_EQ(integerPreference("f"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(integerPreference("g"), 0);
    EXPECT_EQ(integerPreference("h"), 3);
    EXPECT_EQ(integerPreference("absent"), 0);
}

TEST_F(PreferencesTest, ReadsAfreshAtEachCall) {
    EXPECT_EQ(preference("a"), std::nullopt);
    store("a=1");
    EXPECT_EQ(integerPreference("a"), 1);
    store("a=2");
    EXPECT_EQ(integerPreference("a"), 2);
}

TEST_F(PreferencesTest, FallsBackToTheHomeFolder) {
    store("a=1");
    const TemporaryFolder home;
    home.write(".config/Quorbel.ini", "a=2");
    const ScopedVariable homeVariable("HOME", home.path().string());
    {
        const ScopedVariable none("XDG_CONFIG_HOME", std::nullopt);
        EXPECT_EQ(integerPreference("a"), 2);
        const ScopedVariable noHome("HOME", std::nullopt);
        EXPECT_EQ(preference("a"), std::nullopt);
    }
    const ScopedVariable relative("XDG_CONFIG_HOME", "relative/folder");
    EXPECT_EQ(integerPreference("a"), 2);
}

}  // namespace
}  // namespace quorbel
