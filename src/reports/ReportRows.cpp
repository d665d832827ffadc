#include "reports/ReportRows.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <utility>

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

void ReportRows::reset(std::vector<bool> isExpanded, const Details &details) {
    reset(isExpanded.size());
    m_isExpanded = std::move(isExpanded);
    for (std::size_t i = 1; i < m_tree.size(); ++i) {
        const std::size_t own = m_isExpanded[i - 1] ? details(i - 1) : 0;
        m_detailRows += own;
        m_tree[i] += static_cast<std::uint32_t>(own);
        // Entries in front of it are complete, so it is what the next larger one covers of it.
        if (const std::size_t above = i + lowestBit(i); above < m_tree.size()) {
            m_tree[above] += m_tree[i];
        }
    }
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

std::optional<std::size_t> ReportRows::detailBelow(std::size_t row) const {
    const std::size_t below = row + 1;
    if (below >= count()) {
        return std::nullopt;
    }
    const Place place = at(below);
    if (place.detail) {
        return below;
    }
    const auto group = std::find(m_isExpanded.begin() + static_cast<std::ptrdiff_t>(place.group),
                                 m_isExpanded.end(), true);
    return group == m_isExpanded.end()
               ? std::nullopt
               : std::optional(rowOf(static_cast<std::size_t>(group - m_isExpanded.begin())) + 1);
}

std::optional<std::size_t> ReportRows::detailAbove(std::size_t row) const {
    if (row == 0) {
        return std::nullopt;
    }
    const Place place = at(row - 1);
    if (place.detail) {
        return row - 1;
    }
    // The details of the nearest expanded group above end where the next group begins.
    const auto groups =
        std::reverse_iterator(m_isExpanded.begin() + static_cast<std::ptrdiff_t>(place.group));
    const auto group = std::find(groups, m_isExpanded.rend(), true);
    return group == m_isExpanded.rend()
               ? std::nullopt
               : std::optional(rowOf(static_cast<std::size_t>(m_isExpanded.rend() - group)) - 1);
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
