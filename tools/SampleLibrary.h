#pragma once

#include "support/TemporaryFolder.h"

namespace quorbel {

/// What the service's folder holds when a picture is taken.
enum class Sample {
    kEmpty,
    kQuiet,
    kBusy,
    kBad,
    kLongTexts,
    kDay,
    kTwoDays,
    kWeeks,
    kSilentHosts,
    kFirstDay
};

/// Writes log files and, but for kEmpty, a settings document in which everything is in use.
void writeSample(Sample sample, const testing::TemporaryFolder &library);

}  // namespace quorbel
