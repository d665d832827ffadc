#include "reports/ReportRows.h"

#include <bit>

namespace quorbel {

namespace {

std::size_t lowestBit(std::size_t number) {
    return number & (~number + 1);
}

}  // namespace

void ReportRows::reset(std::size_t groups) {
    m_isExpanded.assign(groups, false);
    m_tree.assign(groups + 1, 0);
    m_detailRows = 0;
}

ReportRows::Place ReportRows::at(std::size_t row) const {
    // Down the tree to the last group that begins at or before the row.
    std::size_t group = 0;
    std::size_t rest = row;
    const std::size_t groups = m_isExpanded.size();
    for (std::size_t step = std::bit_floor(groups); step > 0; step /= 2) {
        const std::size_t next = group + step;
        if (next <= groups && step + m_tree[next] <= rest) {
            rest -= step + m_tree[next];
            group = next;
        }
    }
    return {group, rest == 0 ? std::nullopt : std::optional(rest - 1)};
}

std::size_t ReportRows::rowOf(std::size_t group) const {
    std::size_t row = group;
    for (std::size_t i = group; i > 0; i -= lowestBit(i)) {
        row += m_tree[i];
    }
    return row;
}

void ReportRows::expand(std::size_t group, std::size_t details) {
    m_isExpanded[group] = true;
    m_detailRows += details;
    addRows(group, details);
}

void ReportRows::collapse(std::size_t group, std::size_t details) {
    m_isExpanded[group] = false;
    m_detailRows -= details;
    addRows(group, ~details + 1);
}

void ReportRows::addRows(std::size_t group, std::size_t rows) {
    for (std::size_t i = group + 1; i < m_tree.size(); i += lowestBit(i)) {
        m_tree[i] += static_cast<std::uint32_t>(rows);
    }
}

}  // namespace quorbel
