#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorbel {

class ReportEngine;

/// The groups of a report by how many events they have: the largest first, and those of one size in
/// the order in which they first appear. Takes eight bytes for each.
class GroupsBySize {
public:
    GroupsBySize() = default;
    explicit GroupsBySize(const ReportEngine &report);

    [[nodiscard]] std::size_t count() const { return m_groups.size(); }
    /// The group in that place, 0 for the largest.
    [[nodiscard]] std::size_t at(std::size_t place) const { return m_groups[place]; }
    [[nodiscard]] std::size_t placeOf(std::size_t group) const { return m_places[group]; }

private:
    std::vector<std::uint32_t> m_groups;  // by place
    std::vector<std::uint32_t> m_places;  // by group
};

}  // namespace quorbel
