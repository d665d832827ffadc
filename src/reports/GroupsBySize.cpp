#include "reports/GroupsBySize.h"

#include "reports/ReportEngine.h"

#include <numeric>

namespace quorbel {

GroupsBySize::GroupsBySize(const ReportEngine &report)
    : m_groups(report.groupCount()), m_places(report.groupCount()) {
    // Sizes are small numbers beside the number of events, so counting takes fewer steps than
    // comparing: where the groups of each size begin, smaller sizes behind larger ones.
    const std::size_t largest = report.largestGroup();
    std::vector<std::uint32_t> next(largest + 2, 0);
    for (std::size_t group = 0; group < m_groups.size(); ++group) {
        ++next[largest - report.detailCount(group) + 1];
    }
    std::inclusive_scan(next.begin(), next.end(), next.begin());
    for (std::size_t group = 0; group < m_groups.size(); ++group) {
        const std::uint32_t place = next[largest - report.detailCount(group)]++;
        m_groups[place] = static_cast<std::uint32_t>(group);
        m_places[group] = place;
    }
}

}  // namespace quorbel
