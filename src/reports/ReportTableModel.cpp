#include "reports/ReportTableModel.h"

#include "platform/gui/Icons.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <utility>

namespace quorbel {

namespace {

/// In English, as files have it.
const char *title(ReportField field) {
    switch (field) {
        case ReportField::kDate:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Date");
        case ReportField::kPriority:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Priority");
        case ReportField::kHost:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Host");
        default:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Message");
    }
}

}  // namespace

ReportTableModel::ReportTableModel(QObject *parent)
    : QAbstractTableModel(parent),
      m_columns(reportColumns(ReportKind::kHost)),
      m_collapsedMarker(lineIcon(QStringLiteral("expand"))),
      m_expandedMarker(lineIcon(QStringLiteral("collapse"))) {}

ReportTableModel::~ReportTableModel() = default;

void ReportTableModel::clear() {
    setReport(nullptr);
}

void ReportTableModel::setKind(ReportKind kind) {
    clear();
    m_columns = reportColumns(kind);
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void ReportTableModel::setReport(std::unique_ptr<const ReportEngine> report) {
    beginResetModel();
    m_report = std::move(report);
    m_rows.reset(m_report ? m_report->groupCount() : 0);
    m_lastRow = -1;
    endResetModel();
}

ReportRows::Place ReportTableModel::placeOf(int row) const {
    if (row != m_lastRow) {
        m_lastPlace = m_rows.at(static_cast<std::size_t>(row));
        m_lastRow = row;
    }
    return m_lastPlace;
}

ReportTableModel::Marker ReportTableModel::marker(int row) const {
    const ReportRows::Place place = placeOf(row);
    if (place.detail) {
        return Marker::kNone;
    }
    return m_rows.isExpanded(place.group) ? Marker::kExpanded : Marker::kCollapsed;
}

std::optional<QString> ReportTableModel::message(int row) const {
    const ReportRows::Place place = placeOf(row);
    if (m_columns[0] == ReportField::kMessage) {
        return toQString(m_report->groupText(place.group));
    }
    return !place.detail ? std::nullopt
                         : std::optional(toQString(m_report->detailText(place.group, *place.detail,
                                                                        ReportField::kMessage)));
}

void ReportTableModel::toggle(int row) {
    const Marker before = marker(row);
    if (before == Marker::kNone) {
        return;
    }
    const std::size_t group = placeOf(row).group;
    const std::size_t details = m_report->detailCount(group);
    const int first = row + 1;
    const int last = row + static_cast<int>(details);
    m_lastRow = -1;
    if (before == Marker::kCollapsed) {
        beginInsertRows({}, first, last);
        m_rows.expand(group, details);
        endInsertRows();
    } else {
        beginRemoveRows({}, first, last);
        m_rows.collapse(group, details);
        endRemoveRows();
    }
    m_lastRow = -1;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

int ReportTableModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.count());
}

int ReportTableModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(kReportColumns);
}

QVariant ReportTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    const char *text = title(m_columns[static_cast<std::size_t>(section)]);
    switch (role) {
        case Qt::DisplayRole:
            return tr(text);
        case Qt::EditRole:  // as files have it
            return QString::fromLatin1(text);
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
        default:
            return {};
    }
}

QString ReportTableModel::text(const ReportRows::Place &place, int column) const {
    if (place.detail.has_value() != (column > 0)) {
        return {};
    }
    return toQString(place.detail
                         ? m_report->detailText(place.group, *place.detail,
                                                m_columns[static_cast<std::size_t>(column)])
                         : m_report->groupText(place.group));
}

QString ReportTableModel::spokenText(const ReportRows::Place &place, int column) const {
    QString read = paintedRow(text(place, column));
    if (place.detail || column > 0) {
        return read;
    }
    return (m_rows.isExpanded(place.group) ? tr("%1, expanded") : tr("%1, collapsed")).arg(read);
}

QVariant ReportTableModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const ReportRows::Place place = placeOf(index.row());
    const bool isGroupCell = !place.detail && index.column() == 0;
    switch (role) {
        case Qt::DisplayRole:
            return text(place, index.column());
        case kMarkerRole:
            return QVariant::fromValue(marker(index.row()));
        case Qt::DecorationRole:
            return !isGroupCell                     ? QVariant()
                   : m_rows.isExpanded(place.group) ? m_expandedMarker
                                                    : m_collapsedMarker;
        case Qt::AccessibleTextRole:
            return spokenText(place, index.column());
        default:
            return {};
    }
}

}  // namespace quorbel
