#pragma once

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

class QTableView;

namespace quorbel {

/// Lets the user move a table's columns with the mouse, and remembers their widths and order across
/// starts (see remember()), below the name that was given last. Nothing is written before the
/// user has changed something, and what is remembered is taken whole or, when it does not fit the
/// table, not at all.
class ColumnMemory : public QObject {
    Q_OBJECT

public:
    struct Column {
        int index;  ///< in the model
        int width;  ///< in pixels
        friend bool operator==(const Column &, const Column &) = default;
    };
    using Columns = std::vector<Column>;  ///< as they stand, from left to right

    static constexpr int kWidest = 10'000;

    /// Belongs to the table.
    explicit ColumnMemory(QTableView &table);

    /// Gives the columns the order and widths that are remembered below this name, or else the
    /// model's order and the widths they have. False for the latter.
    bool recall(const QString &name);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] Columns columns() const;
    [[nodiscard]] std::optional<Columns> remembered() const;
    void apply(const Columns &columns);
    void remember();

    QTableView &m_table;
    QString m_name;
    Columns m_pressed;  // before the mouse button went down
};

}  // namespace quorbel
