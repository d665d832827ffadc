#pragma once

#include <QObject>

class QTableView;

namespace quorbel {

/// Keeps a table's place while rows come in at its top: who has scrolled down to read goes on
/// seeing the same rows. The table is moved once for all that came in one turn of the event loop,
/// before it is painted, because each move takes milliseconds among a million rows.
class ReadingPlace : public QObject {
    Q_OBJECT

public:
    /// The table outlives this.
    explicit ReadingPlace(QTableView &table) : m_table(table) {}

    /// So many rows came in at the top.
    void noteArrivals(int count);

private:
    void keep();

    QTableView &m_table;
    int m_arrived = 0;  // since the table was moved last
};

}  // namespace quorbel
