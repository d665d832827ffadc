#pragma once

#include "core/ServiceState.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

namespace quorbel {

/// A table of texts. Columns of numbers stand at the right.
class ServiceRows : public QAbstractTableModel {
    Q_OBJECT

public:
    /// `numbers` are the columns that hold some.
    ServiceRows(QStringList titles, QList<int> numbers, QObject *parent);

    /// Changes what differs, so that a selection stays where it can.
    void show(const QList<QStringList> &rows);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

private:
    [[nodiscard]] QVariant alignment(int column) const;

    QStringList m_titles;
    QList<int> m_numbers;
    QList<QStringList> m_rows;
};

/// Of the counters: what, how many, and what to make of it.
QList<QStringList> counterRows(const ServiceReport &report);
/// Of what was refused: sender, why, how often, when last.
QList<QStringList> refusalRows(const ServiceReport &report);

}  // namespace quorbel
