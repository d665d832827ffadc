#pragma once

#include "events/timeline/TimeAxis.h"

#include <QString>

#include <vector>

namespace quorbel {

/// A mark on a time axis, and what it says.
struct TimeTick {
    int x;
    QString text;
};

/// Marks at round times of the local clock and calendar, at least so many pixels apart, over the
/// width of a picture.
std::vector<TimeTick> ticksOf(const TimeAxis &axis, int width, int distance);

/// "03:25 – 03:30" on the local clock, with the days where the axis' range leaves them open.
QString spanText(const TimeSpan &span, const TimeAxis &axis);

/// How much later the local clock reads than UTC at that moment, in seconds.
std::int64_t clockOffsetAt(std::int64_t moment);

}  // namespace quorbel
