#pragma once

#include "reports/ReportEngine.h"
#include "reports/ReportRows.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <array>
#include <memory>
#include <optional>

namespace quorbel {

/// A report as the table shows it: its groups, all collapsed at first, and below each expanded one
/// its details. A group's row has its value in the first column, a detail's row has the other
/// three.
class ReportTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    /// What data() tells beside the usual: whether a row is that of a collapsed group, of an
    /// expanded one, or of a detail.
    enum class Marker { kNone, kCollapsed, kExpanded };
    static constexpr int kMarkerRole = Qt::UserRole;

    explicit ReportTableModel(QObject *parent = nullptr);
    ~ReportTableModel() override;
    ReportTableModel(const ReportTableModel &) = delete;
    ReportTableModel &operator=(const ReportTableModel &) = delete;

    /// Removes all rows. Titles and columns stay.
    void clear();
    /// Titles the columns for a kind of report, whose fields they show from now on. No rows.
    void setKind(ReportKind kind);
    /// Shows a report of the kind that was set last.
    void setReport(std::unique_ptr<const ReportEngine> report);

    [[nodiscard]] Marker marker(int row) const;
    /// The message of a detail, or of the group in a report by messages; else nothing.
    [[nodiscard]] std::optional<QString> message(int row) const;
    /// Expands a group that is collapsed, collapses one that is expanded; nothing for a detail.
    void toggle(int row);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;

private:
    [[nodiscard]] ReportRows::Place placeOf(int row) const;
    [[nodiscard]] QString text(const ReportRows::Place &place, int column) const;
    [[nodiscard]] QString spokenText(const ReportRows::Place &place, int column) const;

    std::array<ReportField, kReportColumns> m_columns;
    std::unique_ptr<const ReportEngine> m_report;
    ReportRows m_rows;
    QIcon m_collapsedMarker;
    QIcon m_expandedMarker;
    // A row's cells are asked for one after the other.
    mutable int m_lastRow = -1;
    mutable ReportRows::Place m_lastPlace;
};

}  // namespace quorbel

Q_DECLARE_METATYPE(quorbel::ReportTableModel::Marker)
