#pragma once

#include <QAbstractItemModel>
#include <QString>

#include <cstddef>
#include <functional>

class QWidget;

namespace quorbel {

/// The rows of a table to be written, in this order.
struct ExportRows {
    std::size_t count = 0;
    /// The first cell of the row that was chosen as number 0, 1 ... count - 1; an invalid index
    /// when there is no such row any more, and it is left out. Row numbers may change between two
    /// calls (see ProgressWindow), so a table whose rows come and go has to find them otherwise.
    std::function<QModelIndex(std::size_t number)> at;
    /// Asked before each row: false once the table has been emptied or shows something else, which
    /// ends the export. Unset when that cannot be.
    std::function<bool()> areStillThere = {};
};

/// Asks for the file to export a table to, in a panel over `parent`'s window, and returns at once.
/// The panel offers a name made of `content`, what the table holds, and the day. `onChosen` runs
/// with its path after the panel has closed; not at all when it is cancelled.
void openExportPanel(QWidget *parent, const char *content,
                     std::function<void(const QString &path)> onChosen);

/// Writes the column titles, as Qt::EditRole has them where a model has a title for files, and the
/// rows' texts as they are shown, each line ended by a line feed,
/// in UTF-8: all of the model's columns, with commas between them when the file's extension is
/// exactly "csv", otherwise tabs. Nothing is quoted.
///
/// The file takes the place of an older one when all of it is written. False when that failed, the
/// program is to end, or the rows were gone before: the older one, if any, is as it was. Returns
/// when done, with a progress window over `parent` if it takes longer than a moment.
bool exportTable(const QString &path, const QAbstractItemModel &model, const ExportRows &rows,
                 QWidget *parent);

}  // namespace quorbel
