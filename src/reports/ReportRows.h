#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace quorbel {

/// Which group or detail stands in which row while groups are expanded and collapsed: every group
/// has a row, and the details of an expanded one follow it. Each question takes a few steps,
/// however many rows there are.
class ReportRows {
public:
    struct Place {
        std::size_t group = 0;
        std::optional<std::size_t> detail;  ///< absent for the group's own row
    };

    using Details = std::function<std::size_t(std::size_t group)>;

    /// So many groups, all collapsed.
    void reset(std::size_t groups);
    /// As many groups as there are flags, each expanded or not; `details` tells how many a group
    /// has, and is asked for those that are expanded. Takes as long as there are groups, however
    /// many are expanded.
    void reset(std::vector<bool> isExpanded, const Details &details);

    [[nodiscard]] std::size_t count() const { return m_isExpanded.size() + m_detailRows; }
    [[nodiscard]] Place at(std::size_t row) const;
    [[nodiscard]] std::size_t rowOf(std::size_t group) const;
    [[nodiscard]] bool isExpanded(std::size_t group) const { return m_isExpanded[group]; }

    /// The nearest row of a detail below this row, or above it. Takes longer only where very many
    /// collapsed groups lie between.
    [[nodiscard]] std::optional<std::size_t> detailBelow(std::size_t row) const;
    [[nodiscard]] std::optional<std::size_t> detailAbove(std::size_t row) const;

    /// `details` is how many the group has. Precondition: it is collapsed, or expanded.
    void expand(std::size_t group, std::size_t details);
    void collapse(std::size_t group, std::size_t details);

private:
    void addRows(std::size_t group, std::size_t rows);

    std::vector<bool> m_isExpanded;
    // A binary indexed tree: entry i holds the detail rows shown under the (i & -i) groups that end
    // with the one numbered i - 1. Sums are modulo 2^32, as differences are.
    std::vector<std::uint32_t> m_tree;
    std::size_t m_detailRows = 0;
};

}  // namespace quorbel
