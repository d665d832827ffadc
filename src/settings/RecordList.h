#pragma once

#include "platform/Value.h"

#include <QObject>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

class QAbstractButton;

namespace quorbel {

class RecordTableModel;
class RowTableView;

/// A list of records that a settings page edits: its table with the displayed list, the buttons
/// that act on the selected row, and the working list, which is what is saved.
class RecordList : public QObject {
    Q_OBJECT

public:
    struct Setup {
        RowTableView *table;
        QAbstractButton *edit;
        QAbstractButton *remove;
        RecordTableModel *controller;  ///< the displayed list
        Array *working;
        bool (*areEqual)(const Value &, const Value &);  ///< what is removed together
        std::span<const int> columnWidths;               ///< the last column takes the rest
    };

    /// What the setup names outlives the object.
    RecordList(const Setup &setup, QObject *parent);

    /// Displays the working list anew, with no row selected.
    void load();
    /// Takes the selection away, and with it what acts on it.
    void deselect();
    /// The focus of a button that is disabled goes to the table.
    void enableButtons(bool enabled);
    /// Enables the buttons exactly when a row is selected.
    void followSelection();
    /// The selected record, if there is one; an empty one for what is no record.
    [[nodiscard]] std::optional<Dictionary> selectedRecord() const;
    /// Puts a record in the place of the selected one in both lists, or at their ends when none is
    /// selected. One that an earlier removal of an equal one took out of the working list comes
    /// back into it where it is displayed.
    void store(const Dictionary &record);
    /// Takes the selected record out of the displayed list, and all that are equal to it out of the
    /// working list. False when none is selected. None is selected afterwards.
    bool removeSelected();

Q_SIGNALS:
    /// The user clicked in the table, or the selection changed.
    void clicked();
    /// The user asked by a double click or the Enter key to edit the selected record.
    void editRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] int selectedRow() const;
    void append(const Dictionary &record);
    void removeFromWorking(std::size_t place);
    void insertIntoWorking(std::size_t row, const Dictionary &record);

    Setup m;
    /// Where each displayed record is in the working list. The two lists have the same order, but
    /// a removal takes more out of the working one: then what it took has no place there.
    std::vector<std::optional<std::size_t>> m_places;
};

}  // namespace quorbel
