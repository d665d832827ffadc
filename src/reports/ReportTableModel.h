#pragma once

#include "reports/GroupsBySize.h"
#include "reports/ReportEngine.h"
#include "reports/ReportRows.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// How many events a group has, and what that is beside the others. Painted and read aloud, but in
/// no cell.
struct GroupShare {
    std::size_t events = 0;
    std::size_t largest = 0;  ///< of the largest group
    std::size_t inAll = 0;    ///< of all groups
};

/// A group's part of all events in percent, "< 1 %" and "> 99 %" where a whole number would say
/// none or all.
[[nodiscard]] QString percentText(const GroupShare &share);

/// A report as the table shows it: its groups, all collapsed at first, and below each expanded one
/// its details. A group's row has its value in the first column, a detail's row has the other
/// three. The groups stand in the order in which they first appear, or the largest first.
class ReportTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    /// What data() tells beside the usual: whether a row is that of a collapsed group, of an
    /// expanded one, or of a detail.
    enum class Marker { kNone, kCollapsed, kExpanded };
    static constexpr int kMarkerRole = Qt::UserRole;
    /// What data() tells of a group's row: its GroupShare. Nothing for a detail.
    static constexpr int kShareRole = Qt::UserRole + 1;

    explicit ReportTableModel(QObject *parent = nullptr);
    ~ReportTableModel() override;
    ReportTableModel(const ReportTableModel &) = delete;
    ReportTableModel &operator=(const ReportTableModel &) = delete;

    /// Removes all rows. Titles and columns stay.
    void clear();
    /// Titles the columns for a kind of report, whose fields they show from now on. No rows.
    void setKind(ReportKind kind);
    /// Shows a report of the kind that was set last.
    void setReport(std::shared_ptr<const ReportEngine> report);
    /// The same report with the same groups expanded, in the order in which the groups first
    /// appear.
    [[nodiscard]] std::unique_ptr<ReportTableModel> inOrderOfAppearance() const;
    /// Null without one.
    [[nodiscard]] const ReportEngine *report() const { return m_report.get(); }
    /// Tells one report from those before it.
    [[nodiscard]] unsigned reportNumber() const { return m_reportNumber; }

    [[nodiscard]] Marker marker(int row) const;
    /// The message of a detail, or of the group in a report by messages; else nothing.
    [[nodiscard]] std::optional<QString> message(int row) const;
    /// What a detail's row is about; nothing for a group's. Valid until the next call.
    [[nodiscard]] std::optional<LogLine> detail(int row) const;
    /// Expands a group that is collapsed, collapses one that is expanded; nothing for a detail.
    void toggle(int row);
    /// Expands or collapses all groups at once, which resets the model: views forget where they
    /// were. Rows are found again through their places.
    void setAllExpanded(bool expanded);
    /// Whether the largest group comes first; off at first, and stays for later reports. Resets the
    /// model.
    void setLargestFirst(bool largestFirst);
    [[nodiscard]] bool isLargestFirst() const { return m_isLargestFirst; }

    /// Which group or detail stands in a row, whatever row that may become.
    [[nodiscard]] ReportRows::Place placeOf(int row) const;
    /// Where it stands now: the row of its group while that is collapsed.
    [[nodiscard]] int rowOf(const ReportRows::Place &place) const;
    /// The row of the group that is the next smaller one, or the next larger one, beside the group
    /// in `row` or that of the detail there. Of no row (-1), the largest or the smallest group. -1
    /// where there is none.
    [[nodiscard]] int rowOfNextSmaller(int row) const;
    [[nodiscard]] int rowOfNextLarger(int row) const;
    /// The row of the next event below `row`, or above it, of all that the table shows. -1 where
    /// there is none.
    [[nodiscard]] int detailBelow(int row) const;
    [[nodiscard]] int detailAbove(int row) const;
    /// Groups that have the longest values as `length` measures them, longest first: all that may
    /// be the longest when `length` is only about right. Of very many groups, only some are looked
    /// at.
    [[nodiscard]] std::vector<std::size_t> longestGroups(
        const std::function<int(std::string_view value)> &length) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;

private:
    [[nodiscard]] std::size_t groupAt(std::size_t slot) const;
    [[nodiscard]] std::size_t slotOf(std::size_t group) const;
    [[nodiscard]] bool isExpanded(std::size_t group) const;
    [[nodiscard]] GroupShare share(std::size_t group) const;
    [[nodiscard]] const GroupsBySize &bySize() const;
    void setExpanded(std::vector<bool> isExpanded, bool largestFirst);
    [[nodiscard]] QString text(const ReportRows::Place &place, int column) const;
    [[nodiscard]] QString spokenGroup(std::size_t group, const QString &value) const;
    [[nodiscard]] QString spokenText(const ReportRows::Place &place, int column) const;

    std::array<ReportField, kReportColumns> m_columns;
    std::shared_ptr<const ReportEngine> m_report;
    unsigned m_reportNumber = 0;
    ReportRows m_rows;  // by slot: a group's number, or its place by size
    bool m_isLargestFirst = false;
    mutable std::optional<GroupsBySize> m_bySize;  // once somebody asked
    QIcon m_collapsedMarker;
    QIcon m_expandedMarker;
    // A row's cells are asked for one after the other.
    mutable int m_lastRow = -1;
    mutable ReportRows::Place m_lastPlace;
};

}  // namespace quorbel

Q_DECLARE_METATYPE(quorbel::ReportTableModel::Marker)
Q_DECLARE_METATYPE(quorbel::GroupShare)
