#include "core/AppState.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace quorbel {
namespace {

TEST(AppStateTest, EachClassHasItsOwnCounterAndLevel) {
    AppState state;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        state.*kSeverityCounters[i] = static_cast<std::int64_t>(i) + 1;
        state.*kSeverityLevels[i] = static_cast<std::int64_t>(i) + 101;
    }
    EXPECT_EQ(state.iEmergency, 1);
    EXPECT_EQ(state.iAlert, 2);
    EXPECT_EQ(state.iCritical, 3);
    EXPECT_EQ(state.iError, 4);
    EXPECT_EQ(state.iWarning, 5);
    EXPECT_EQ(state.iNotice, 6);
    EXPECT_EQ(state.iInformation, 7);
    EXPECT_EQ(state.iDebug, 8);
    EXPECT_EQ(state.iUnknown, 9);
    EXPECT_EQ(state.iSeverityEmergency, 101);
    EXPECT_EQ(state.iSeverityAlerting, 102);
    EXPECT_EQ(state.iSeverityInformation, 107);
    EXPECT_EQ(state.iSeverityUnknown, 109);
}

}  // namespace
}  // namespace quorbel
