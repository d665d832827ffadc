#include "reports/ReportRows.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace quorbel {
namespace {

// A row of the plain list below: a group has no detail.
struct PlainRow {
    std::size_t group = 0;
    std::optional<std::size_t> detail;
    bool isExpanded = false;
};

// The rows as a list, and the walks over it that a click comes down to.
class PlainRows {
public:
    explicit PlainRows(const std::vector<std::size_t> &details) : m_details(details) {
        for (std::size_t group = 0; group < details.size(); ++group) {
            rows.push_back({group, std::nullopt, false});
        }
    }
    void click(std::size_t r) {
        const auto at = [this](std::size_t row) {
            return rows.begin() + static_cast<std::ptrdiff_t>(row);
        };
        PlainRow &clicked = rows[r];
        if (clicked.detail) {
            return;
        }
        const std::size_t group = clicked.group;
        clicked.isExpanded = !clicked.isExpanded;
        if (clicked.isExpanded) {
            for (std::size_t detail = 0; detail < m_details[group]; ++detail) {
                rows.insert(at(r + 1 + detail), {group, detail, false});
            }
            return;
        }
        while (r + 1 < rows.size() && rows[r + 1].detail && rows[r + 1].group == group) {
            rows.erase(at(r + 1));
        }
    }

    std::vector<PlainRow> rows;

private:
    std::vector<std::size_t> m_details;
};

void expectSameRows(const ReportRows &rows, const PlainRows &plain) {
    ASSERT_EQ(rows.count(), plain.rows.size());
    for (std::size_t row = 0; row < plain.rows.size(); ++row) {
        const ReportRows::Place place = rows.at(row);
        EXPECT_EQ(place.group, plain.rows[row].group);
        EXPECT_EQ(place.detail, plain.rows[row].detail);
        if (!place.detail) {
            EXPECT_EQ(rows.rowOf(place.group), row);
            EXPECT_EQ(rows.isExpanded(place.group), plain.rows[row].isExpanded);
        }
    }
    std::optional<std::size_t> above;
    for (std::size_t row = 0; row < plain.rows.size(); ++row) {
        EXPECT_EQ(rows.detailAbove(row), above);
        above = plain.rows[row].detail ? std::optional(row) : above;
    }
    std::optional<std::size_t> below;
    for (std::size_t row = plain.rows.size(); row-- > 0;) {
        EXPECT_EQ(rows.detailBelow(row), below);
        below = plain.rows[row].detail ? std::optional(row) : below;
    }
}

TEST(ReportRowsTest, ManyGroupsAreExpandedAtOnceAsOneByOne) {
    std::mt19937 random(7);
    for (const std::size_t groups : {0U, 1U, 2U, 3U, 8U, 9U, 64U, 101U}) {
        std::vector<std::size_t> details;
        std::vector<bool> isExpanded;
        for (std::size_t group = 0; group < groups; ++group) {
            details.push_back(1 + random() % 6);
            isExpanded.push_back(random() % 3 > 0);
        }
        PlainRows plain(details);
        for (std::size_t row = plain.rows.size(); row-- > 0;) {
            if (isExpanded[row]) {
                plain.click(row);
            }
        }
        ReportRows rows;
        rows.reset(isExpanded, [&details](std::size_t group) { return details[group]; });
        expectSameRows(rows, plain);
        for (int click = 0; click < 50 && groups > 0; ++click) {
            const std::size_t row = random() % rows.count();
            if (const auto place = rows.at(row); !place.detail) {
                rows.isExpanded(place.group) ? rows.collapse(place.group, details[place.group])
                                             : rows.expand(place.group, details[place.group]);
            }
            plain.click(row);
            expectSameRows(rows, plain);
        }
    }
}

TEST(ReportRowsTest, AnyClicksGiveTheRowsOfAPlainList) {
    std::mt19937 random(3);
    for (const std::size_t groups : {1U, 2U, 3U, 7U, 8U, 9U, 64U, 100U}) {
        std::vector<std::size_t> details;
        for (std::size_t group = 0; group < groups; ++group) {
            details.push_back(1 + random() % 6);
        }
        PlainRows plain(details);
        ReportRows rows;
        rows.reset(groups);
        expectSameRows(rows, plain);
        for (int click = 0; click < 200; ++click) {
            const std::size_t row = random() % rows.count();
            if (const auto place = rows.at(row); !place.detail) {
                rows.isExpanded(place.group) ? rows.collapse(place.group, details[place.group])
                                             : rows.expand(place.group, details[place.group]);
            }
            plain.click(row);
            expectSameRows(rows, plain);
        }
    }
}

TEST(ReportRowsTest, ResetForgetsWhatWasExpanded) {
    ReportRows rows;
    rows.reset(2);
    rows.expand(0, 5);
    EXPECT_EQ(rows.count(), 7U);
    rows.reset(3);
    EXPECT_EQ(rows.count(), 3U);
    EXPECT_FALSE(rows.isExpanded(0));
    EXPECT_EQ(rows.at(1).group, 1U);
    rows.reset(0);
    EXPECT_EQ(rows.count(), 0U);
}

}  // namespace
}  // namespace quorbel
