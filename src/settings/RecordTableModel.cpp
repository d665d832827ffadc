#include "settings/RecordTableModel.h"

#include "common/SettingsDocument.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <array>
#include <string_view>
#include <utility>

namespace quorbel {

namespace {

/// By column; but for the host's, keys of the fields as well.
constexpr std::array<const char *, RecordTableModel::kFilterColumnCount> kTitles{
    QT_TRANSLATE_NOOP("quorbel::RecordTableModel", "Name"),
    QT_TRANSLATE_NOOP("quorbel::RecordTableModel", "Host"),
    QT_TRANSLATE_NOOP("quorbel::RecordTableModel", "Facility"),
    QT_TRANSLATE_NOOP("quorbel::RecordTableModel", "Severity"),
    QT_TRANSLATE_NOOP("quorbel::RecordTableModel", "Message")};

QString field(const Dictionary &record, std::string_view key) {
    return toQString(settingText(record, key).value_or(std::string()));
}

QString cell(const Dictionary &record, int column) {
    if (column != RecordTableModel::kHost) {
        const QString text = field(record, kTitles[static_cast<std::size_t>(column)]);
        const bool isChoice =
            column == RecordTableModel::kFacility || column == RecordTableModel::kSeverity;
        return isChoice ? knownName(text) : text;
    }
    const QString address = field(record, "IP");
    const QString mask = field(record, "Mask");
    if (address == QStringLiteral("0.0.0.0") && mask == QStringLiteral("0")) {
        return knownName(std::string_view("Any"));
    }
    return mask.isEmpty() ? address : address + u'/' + mask;
}

}  // namespace

void RecordTableModel::setLastColumn(const QString &title,
                                     QString (*text)(const Dictionary &record)) {
    m_lastTitle = title;
    m_lastText = text;
}

void RecordTableModel::setRecords(Array records) {
    beginResetModel();
    m_records = std::move(records);
    endResetModel();
}

const Value &RecordTableModel::record(int row) const {
    return m_records.at(static_cast<std::size_t>(row));
}

void RecordTableModel::append(Value record) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_records.push_back(std::move(record));
    endInsertRows();
}

void RecordTableModel::replace(int row, Value record) {
    m_records.at(static_cast<std::size_t>(row)) = std::move(record);
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void RecordTableModel::remove(int row) {
    beginRemoveRows({}, row, row);
    m_records.erase(m_records.begin() + row);
    endRemoveRows();
}

int RecordTableModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_records.size());
}

int RecordTableModel::columnCount(const QModelIndex &parent) const {
    if (parent.isValid()) {
        return 0;
    }
    return m_lastText != nullptr ? kFilterColumnCount + 1 : kFilterColumnCount;
}

QVariant RecordTableModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return {};
    }
    const Dictionary *fields = record(index.row()).dictionary();
    if (fields == nullptr) {
        return QString();
    }
    return index.column() == kFilterColumnCount ? m_lastText(*fields)
                                                : cell(*fields, index.column());
}

QVariant RecordTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    return section == kFilterColumnCount ? m_lastTitle
                                         : tr(kTitles[static_cast<std::size_t>(section)]);
}

}  // namespace quorbel
