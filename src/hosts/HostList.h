#pragma once

#include "hosts/HostRows.h"
#include "platform/gui/RowTableView.h"

#include <QAbstractTableModel>

#include <vector>

namespace quorbel {

/// A few hosts, as a list of a box of the home page: all of them in sight, without a header or a
/// frame. A double click or Return chooses one.
class HostList : public RowTableView {
    Q_OBJECT

public:
    explicit HostList(QWidget *parent = nullptr);

Q_SIGNALS:
    void chosen(const QString &host);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void choose();
};

/// The rows of a HostList. A subclass says what is in the columns.
class HostListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    /// Changes what differs, and nothing where nothing does.
    void setRows(std::vector<HostRow> rows);
    [[nodiscard]] const std::vector<HostRow> &rows() const { return m_rows; }
    [[nodiscard]] const HostRow &row(const QModelIndex &index) const {
        return m_rows[static_cast<std::size_t>(index.row())];
    }
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;

private:
    std::vector<HostRow> m_rows;
};

}  // namespace quorbel
