#pragma once

#include "platform/Value.h"

#include <QAbstractTableModel>

namespace quorbel {

/// A list of records, each with the fields of a filter, as its table shows it: one row a record, in
/// the order of the list.
class RecordTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { kName, kHost, kFacility, kSeverity, kMessage, kFilterColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    /// One more column, behind those of the filter. Called before a view has the model.
    void setLastColumn(const QString &title, QString (*text)(const Dictionary &record));

    void setRecords(Array records);
    /// What is no record, in a damaged list, is carried along and shows as an empty one.
    [[nodiscard]] const Value &record(int row) const;
    void append(Value record);
    void replace(int row, Value record);
    void remove(int row);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

private:
    Array m_records;
    QString m_lastTitle;
    QString (*m_lastText)(const Dictionary &record) = nullptr;
};

}  // namespace quorbel
