#pragma once

#include <QString>

namespace quorbel {

class ReportEngine;

/// "47,818 events · 12 hosts · 47,822 lines read · 4 skipped", for the line below the table. Empty
/// where nothing was grouped.
[[nodiscard]] QString reportCounts(const ReportEngine &report);

}  // namespace quorbel
